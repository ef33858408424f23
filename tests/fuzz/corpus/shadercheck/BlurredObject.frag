#version 150
const	int	horizontal = 1;
const float filter[] = float[](0.33333333333333337, 1.0, 0.33333333333333337);
uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;

vec4 getColor(ivec2 P)
{
const int	N = filter.length();
vec4	Color = vec4(0.0, 0.0, 0.0, 0.0);
float	W = 0.0;

	for(int i=0; i<N; i++)
	{
	ivec2	Q = P;

		if (horizontal == 1)
			Q.x += N/2 - i;
		else
			Q.y += N/2 - i;

	vec4	Texel = texelFetch(SceneColor, Q, 0);
#if	0
	float	F = pow(Texel.b, 8.0);
#else
	const float	F = 1.0;
#endif
		Color += Texel * filter[i] * F;
		W += filter[i];
	}

	return Color / W;
}

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
vec4	Color = getColor(P);
float	Depth = texelFetch(SceneDepth, P, 0).r;
int	Sampled = 1;
int	NumberOfSamples = max(1, nSamples);

	for(int i=1; i<NumberOfSamples; i++)
	{
		Color += getColor(P);
		Depth = min(Depth, texelFetch(SceneDepth, P, i).r);
		Sampled += 1;
	}

	Color /= float(max(Sampled, 1));

	gl_FragColor = Color;
	gl_FragDepth = Depth;
}
