const float a = 9.999999999999994e-08;
const float b = 100.00000000000004;
uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
vec4 offset = vec4(a,a,a,a);
	gl_FragColor.r = pow(Color.r/( Color.r + a ), b);
	gl_FragColor.g = pow(Color.g/( Color.g + a ), b);
	gl_FragColor.b = pow(Color.b/( Color.b + a ), b);
	gl_FragColor.a = pow(Color.a/( Color.a + a ), b);
}
