#version 150
const float a = 1.0;
const float b = 1.0;
uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;
uniform float	TransparencyExponent;

float f(float I)
{
	return pow(I / (a + I), 10*b);
}

vec4 ToneMap(vec4 Color)
{
	return vec4(f(Color.r), f(Color.g), f(Color.b), f(Color.a));
}

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
vec4	Color = texelFetch(SceneColor, P, 0);
float	Depth = texelFetch(SceneDepth, P, 0).r;
int	Sampled = 1;
int	NumberOfSamples = max(1, nSamples);

	for(int i=1; i<NumberOfSamples; i++)
	{
		Color += texelFetch(SceneColor, P, i);
		Depth = min(Depth, texelFetch(SceneDepth, P, i).r);
		Sampled += 1;
	}

	Color /= float(max(Sampled, 1));

	Color = ToneMap(Color);
	Color.a = pow(Color.a, TransparencyExponent);

	gl_FragColor = Color;
	gl_FragDepth = Depth;
}

/*
	I / (a + I) takes [0, infinity) onto [0, 1): 0 stays 0, a becomes one half.
	The samples are averaged before they are mapped, so that an edge is mapped
	at its mean intensity.
*/
