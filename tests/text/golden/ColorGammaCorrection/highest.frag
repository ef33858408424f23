const float Gr = 10.000000000000002;
const float Gg = 10.000000000000002;
const float Gb = 10.000000000000002;
const float Ga = 10.000000000000002;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor.r = pow(Color.r, Gr);
	gl_FragColor.g = pow(Color.g, Gg);
	gl_FragColor.b = pow(Color.b, Gb);
	gl_FragColor.a = pow(Color.a, Ga);
}
