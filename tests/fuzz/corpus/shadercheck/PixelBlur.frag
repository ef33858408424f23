const int FilterWidth        = 3;
const float FilterBrightness = 1.5;
const float FilterSharpness  = 1.5;

uniform sampler2D frame;
void main (void)
{
vec4 Color = vec4(0.0, 0.0, 0.0, 0.0);
float FW = float(FilterWidth);
	for(int i=0; i<=FilterWidth; i++)
	for(int j=0; j<=FilterWidth; j++)
	{
	vec2 offset = vec2( float(i-FilterWidth*0.5)/FW, float(j-FilterWidth*0.5)/FW );
	float r2 = dot(offset, offset);
	float weight = FilterBrightness*exp(-r2)/(FW*FW);
		offset /= FilterSharpness*50.0;
		Color += weight*texture2D(frame, gl_TexCoord[0].xy + offset);
	}
	gl_FragColor = Color;
}
