// SPDX-License-Identifier: Apache-2.0
// A vignette: the picture falls off towards its corners.
//     plime process sky.exr -o framed.png --srgb --with Hollywood/TileProgram -p code=@examples/vignette.frag
uniform sampler2D frame;

const float Reach = 0.3;   // where the fall begins; 1 is the middle of each edge
const float Darkest = 0.05; // what is left in the corners

void main(void)
{
    vec2 place = gl_TexCoord[0].xy;
    float distance = length(2.0 * place - 1.0);
    vec4 colour = texture2D(frame, place);
    gl_FragColor = vec4(colour.rgb * mix(1.0, Darkest, smoothstep(Reach, 1.5, distance)), colour.a);
}
