#version 150
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
float	Depth = texelFetch(SceneDepth, P, 0).r;
float	Alpha = texelFetch(SceneColor, P, 0).a;

	gl_FragColor = vec4(Depth, Depth, Depth, Alpha);
	gl_FragDepth = Depth;
}
