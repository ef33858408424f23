#version 150
const float hue = 0.0;
const float saturation = 1.0;
const float value = 1.0;
const bool do_r = true;
const bool do_g = true;
const bool do_b = true;
uniform int	nSamples;
uniform sampler2DMS SceneColor;
uniform sampler2DMS SceneDepth;

// Hue in degrees, saturation, value. Without branches: a selector of 0 takes
// the new value, a selector of 1 keeps the old one.
vec3 RGBtoHSV(float r, float g, float b)
{
float	minv = min(min(r, g), b);
float	maxv = max(max(r, g), b);
vec3	res = vec3(0.0, 0.0, 0.0);

	res.z = maxv;

float	delta = maxv - minv;

float	br1 = 1.0 - abs(sign(maxv));
	res.y = mix(delta / maxv, 0.0, br1);
	res.x = mix(res.x, -1.0, br1);

float	br2 = abs(sign(r - maxv));
	res.x = mix((g - b) / delta, res.x, max(br2, br1));

float	br3 = abs(sign(g - maxv));
	res.x = mix(2.0 + (b - r) / delta, res.x, max(br3, br1));

float	br4 = 1.0 - br2 * br3;
	res.x = mix(4.0 + (r - g) / delta, res.x, max(br4, br1));

	res.x = mix(res.x * 60.0, res.x, br1);

float	br5 = clamp(sign(res.x), -1.0, 0.0) + 1.0;
	res.x = mix(res.x + 360.0, res.x, max(br5, br1));

	return res;
}

vec3 HSVtoRGB(vec3 hsv)
{
float	h = hsv.x;
float	s = hsv.y;
float	v = hsv.z;

	if (s == 0.0)
		return vec3(v, v, v);

	h = mod(h, 360.0);
	if (h < 0.0)
		h += 360.0;
	h /= 60.0;

int	i = int(floor(h));
float	f = h - i;
float	p = v * (1.0 - s);
float	q = v * (1.0 - s * f);
float	t = v * (1.0 - s * (1.0 - f));

	if (i == 0)
		return vec3(v, t, p);
	if (i == 1)
		return vec3(q, v, p);
	if (i == 2)
		return vec3(p, v, t);
	if (i == 3)
		return vec3(p, q, v);
	if (i == 4)
		return vec3(t, p, v);

	return vec3(v, p, q);
}

void main()
{
ivec2	P = ivec2(gl_FragCoord.xy);
vec4	Color = texelFetch(SceneColor, P, 0);
vec3	Color2 = RGBtoHSV(Color.r, Color.g, Color.b);
float	Depth = texelFetch(SceneDepth, P, 0).r;

	Color2.x += hue;
	Color2.y *= saturation;
	Color2.z *= value;

vec4	ResColor = vec4(1.0, 1.0, 1.0, 1.0);
int	Sampled = 1;

	ResColor.rgb = HSVtoRGB(Color2);

	for(int i=1; i<max(1, nSamples); i++)
	{
	vec4	C = texelFetch(SceneColor, P, i);
	vec3	C2 = RGBtoHSV(C.r, C.g, C.b);

		C2.x += hue;
		C2.y *= saturation;
		C2.z *= value;

		ResColor.rgb += HSVtoRGB(C2);
		Depth = min(Depth, texelFetch(SceneDepth, P, i).r);
		Sampled += 1;
	}

	ResColor.rgb = ResColor.rgb / float(max(Sampled, 1));

	if (!do_r)
		ResColor.r = Color.r;
	if (!do_g)
		ResColor.g = Color.g;
	if (!do_b)
		ResColor.b = Color.b;

	gl_FragColor = ResColor;
	gl_FragDepth = Depth;
}
