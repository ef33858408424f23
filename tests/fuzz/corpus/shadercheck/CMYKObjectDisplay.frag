#version 150
uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;

vec4 ProcessColor(vec4 C)
{
float	Black = min(min(1. - C.r, 1-C.g), C.b);
float	White = 1 - Black;

float	Cyan    = (White - C.r) / White;
float	Magenta = (White - C.g) / White;
float	Yellow  = (White - C.b) / White;

float	Red   = 1 - min(1, Cyan    * White + Black);
float	Green = 1 - min(1, Magenta * White + Black);
float	Blue  = 1 - min(1, Yellow  * White + Black);

//	return vec4(Red, Green, Blue, C.a);
	return vec4(Cyan, Magenta, Yellow, C.a);
}

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
vec4	Color = ProcessColor(texelFetch(SceneColor, P, 0));
float	Depth = texelFetch(SceneDepth, P, 0).r;
int	Sampled = 0;

	for(int i=1; i<max(1, nSamples); i++)
	{
		Color += ProcessColor(texelFetch(SceneColor, P, i));
		Depth = min(Depth, texelFetch(SceneDepth, P, i).r);
		Sampled += 1;
	}

	gl_FragColor = Color / float(max(Sampled, 1));
	gl_FragDepth = Depth;
}


