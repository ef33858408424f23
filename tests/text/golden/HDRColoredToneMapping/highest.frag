const float Gr = 10.000000000000002;
const float Gg = 10.000000000000002;
const float Gb = 10.000000000000002;
const float Ga = 10.000000000000002;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor.r = Color.r/( Color.r + Gr );
	gl_FragColor.g = Color.g/( Color.g + Gg );
	gl_FragColor.b = Color.b/( Color.b + Gb );
	gl_FragColor.a = Color.a/( Color.a + Ga );
}
