const float Gr = 1.0;
const float Gg = 100.00000000000004;
const float Gb = 1.0;
const float Ga = 9.999999999999994e-08;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor.r = Color.r/( Color.r + Gr );
	gl_FragColor.g = Color.g/( Color.g + Gg );
	gl_FragColor.b = Color.b/( Color.b + Gb );
	gl_FragColor.a = Color.a/( Color.a + Ga );
}
