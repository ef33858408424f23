const float Gr = 0.09999999999999998;
const float Gg = 0.09999999999999998;
const float Gb = 0.09999999999999998;
const float Ga = 0.09999999999999998;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor.r = Color.r/( Color.r + Gr );
	gl_FragColor.g = Color.g/( Color.g + Gg );
	gl_FragColor.b = Color.b/( Color.b + Gb );
	gl_FragColor.a = Color.a/( Color.a + Ga );
}
