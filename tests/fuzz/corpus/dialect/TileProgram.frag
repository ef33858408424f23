uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);
}
--log--
0:5(10): error: `c' undeclared
0:1000001(3): warning: shim
0(3) : error C1115: unable to find
ERROR: 0:3: 'x' : undeclared
  candidate
99999999999999:0(1): error: 
