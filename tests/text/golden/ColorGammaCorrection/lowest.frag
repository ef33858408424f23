const float Gr = 0.09999999999999998;
const float Gg = 0.09999999999999998;
const float Gb = 0.09999999999999998;
const float Ga = 0.09999999999999998;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor.r = pow(Color.r, Gr);
	gl_FragColor.g = pow(Color.g, Gg);
	gl_FragColor.b = pow(Color.b, Gb);
	gl_FragColor.a = pow(Color.a, Ga);
}
