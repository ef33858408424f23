#version 150
const float px = 0.5;
const float py = 0.5;
const bool do_r = true;
const bool do_g = true;
const bool do_b = true;
uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;

// bilinear test curve
vec3 curve(vec3 col)
{
float	k1 = py / px;
float	k2 = (py - 1) / (px - 1);
float	d2 = 1 - k2;

	if (do_r)
		col.r = col.r < px ? k1 * col.r : 1./k1 * col.r + d2;
	if (do_g)
		col.g = col.g < px ? k1 * col.g : 1./k1 * col.g + d2;
	if (do_b)
		col.b = col.b < px ? k1 * col.b : 1./k1 * col.b + d2;

	return col;
}

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
vec4	Color = texelFetch(SceneColor, P, 0);
float	Depth = texelFetch(SceneDepth, P, 0).r;
int	Sampled = 1;

	Color.xyz = curve(Color.xyz);

	for(int i=1; i<max(1, nSamples); i++)
	{
	vec4	C = texelFetch(SceneColor, P, i);

		C.xyz = curve(C.xyz);
		Color.xyz += C.xyz;
		Depth = min(Depth, texelFetch(SceneDepth, P, i).r);
		Sampled += 1;
	}

	Color.xyz /= float(max(Sampled, 1));

	gl_FragColor = Color;
	gl_FragDepth = Depth;
}
