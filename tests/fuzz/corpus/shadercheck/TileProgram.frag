uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);
}
