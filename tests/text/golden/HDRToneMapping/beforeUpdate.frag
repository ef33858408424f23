uniform sampler2D frame;
void main (void)
{
vec4 Color = texture2D(frame, gl_TexCoord[0].xy);
	gl_FragColor = Color;
}
