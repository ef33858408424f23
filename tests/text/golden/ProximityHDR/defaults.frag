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
uniform float	gamma;
uniform float	brightness;

out vec4	FragmentColor;

float Luminance(vec4 Pixel)
{
	return max(Pixel.r, max(Pixel.g, Pixel.b)) / pow(10, strength);
}

vec4 getColor(ivec2 P)
{
const int	N = weight.length();
vec4	avgColor = vec4(0.0, 0.0, 0.0, 0.0);
float	W = 0.0;
float	maxLuminance = 0.0;

	for(int i=0; i<N; i++)
	{
	vec4	Pixel = brightness * texelFetch(SceneColor, ivec2(P.x + iX[i], P.y + iY[i]), 0);

		W += weight[i];

	float	PixelLuminance = Luminance(Pixel) * weight[i];

		maxLuminance = max(maxLuminance, PixelLuminance);
		avgColor += weight[i] * Pixel;
	}

	avgColor = avgColor / W;

vec4	Pixel = brightness * texelFetch(SceneColor, P, 0);
float	Luminance = Luminance(Pixel);

#if	0
float	maxL = max(avgColor.r, max(avgColor.g, avgColor.b));
#elif	1
float	maxL = maxLuminance;
#else
float	maxL = Luminance;
#endif
float	F = maxL / (1 + maxL);

	return pow(Pixel * F / Luminance, vec4(gamma, gamma, gamma, gamma));
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
