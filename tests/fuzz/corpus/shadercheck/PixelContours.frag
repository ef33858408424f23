#version 150
const float weight[] = float[](
0.25, 0.5, 0.25, 
0.5, 1.0, 0.5, 
0.25, 0.5, 0.25
);

const int iX[] = int[](
-1, 0, 1, 
-1, 0, 1, 
-1, 0, 1
);

const int iY[] = int[](
-1, -1, -1, 
0, 0, 0, 
1, 1, 1
);

uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;
uniform float	strength;
uniform float	LuminanceSustainbilityFactor;

out vec4	FragmentColor;

float Luminance(vec4 Color)
{
	return max(Color.r, max(Color.g, Color.b));
}

vec4 getColor(ivec2 P)
{
const int	N = weight.length();
vec4	avgColor = vec4(0.0, 0.0, 0.0, 0.0);
float	W = 0.0;

	for(int i=0; i<N; i++)
	{
	vec4	Pixel = texelFetch(SceneColor, ivec2(P.x + iX[i], P.y + iY[i]), 0);

		W += weight[i];
		avgColor += weight[i] * Pixel;
	}

	avgColor = avgColor / W;

float	Strength = 1.0 - pow(10.0, -3.0 * strength);
vec4	CentralColor = texelFetch(SceneColor, P, 0);
vec4	NewColor = CentralColor - Strength * avgColor;
float	LFactor = mix(1.0, Luminance(CentralColor) / Luminance(NewColor), LuminanceSustainbilityFactor);

	return NewColor * LFactor;
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

	FragmentColor = Color / float(max(Sampled, 1));
	gl_FragDepth = Depth;
}
