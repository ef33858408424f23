const float a = 1.0;
const float b = 1.0;
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
--log--
0:5(10): error: `c' undeclared
0:1000001(3): warning: shim
0(3) : error C1115: unable to find
ERROR: 0:3: 'x' : undeclared
  candidate
99999999999999:0(1): error: 
