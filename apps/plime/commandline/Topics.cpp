// SPDX-License-Identifier: Apache-2.0
#include "apps/plime/commandline/Topics.h"

namespace workbench {
namespace {

constexpr std::string_view Environment = R"(Environment variables

None of them has to be set. Folders in lists have a ":" between them.

  KROD_PLUGIN_PATH       plug-ins, or folders of them, behind those of --plugin
  KROD_SHADER_PATH       folders with shader files, behind those of --shader-dir
  XDG_DATA_HOME          its krod/shaders is the last such folder;
                         ~/.local/share without it
  XDG_CACHE_HOME         its krod/plug-in-trials remembers which plug-ins were
                         tried; ~/.cache without it
  KROD_CODEC_PATH        folders with the libraries that read and write pictures
                         and models
  KROD_PICTURE_SECONDS   how long a decoder may give no answer; 30 without it
  KROD_MODEL_SECONDS     how long the import of a model may take
  KROD_SHADER_SECONDS    how long a user shader may draw one tile
  KROD_PROBE_SECONDS     how long a plug-in may take when it is tried; 10
                         without it
  KROD_VALIDATE_SECONDS  how long each check of "plime validate" may take
  KROD_VALIDATE_SOAK     seconds that the check "soak" takes; 600 without it
  TMPDIR                 where files go that are needed for a moment
  NO_COLOR               anything: messages without colours

OpenGL drivers have variables of their own: LIBGL_ALWAYS_SOFTWARE=1 makes Mesa
draw by software, as --gpu software does.

Page: docs/guide/environment.md
)";

constexpr std::string_view Networks = R"(Networks: how a picture is made, as a JSON text

"plime render" and "plime process" write one with --save-network FILE and keep
one in every picture; "plime info PICTURE --network" prints it, and "plime run"
makes the pictures again. It has three lists and a version:

  {
    "version": 1,
    "objects": [
      {"name": "galaxy", "creator": "Scene/Galaxy"},
      {"name": "soft", "creator": "Display/Blurred", "input": "galaxy",
       "parameters": {"width": "9.0"}},
      {"name": "shine", "creator": "Hollywood/ArcTangens"}
    ],
    "shared": [],
    "views": [
      {"name": "glow", "shows": "soft", "processors": ["shine"],
       "size": [640, 360]}
    ]
  }

  objects   modules by key, with the parameters that are set. Values are texts,
            as "plime describe" and -p write them: "9.0", "+glow", "0.5 0.5".
            A scene has a "file" where it shows one; a display has an "input"
  shared    lists of OBJECT.PARAM that have one value together
  views     the pictures: one that "shows" an object, or one made of a "picture"
            file, through "processors"; "size", "camera", "background", "depth"
            and "srgb" as the options of "plime render"

File names lead from the folder of the network.

  plime run network.json -o '{view}.png' --set soft.width=15

Pages: docs/network.md, docs/network.schema.json
)";

constexpr std::string_view Points = R"(Lists of points

"plime render" draws lists of points from text files (.xyz, .csv, .tsv, .txt,
.dat) and from PLY files without faces; all of them may be packed (.gz).

A text file has a point per line, numbers with commas, semicolons, tabs or
blanks between them. Its first line may name the columns, in any order and case:

  x, y, z             place; must be there
  red, green, blue    colour, also as r, g, b; 1 without them
  alpha               opacity, also as a; 1 without it
  intensity           factor on the colour; 1 without it

Columns of other names are left out. Without names, the number of columns says
what they are:

  3  x y z                        6  x y z red green blue
  4  x y z intensity              7  x y z red green blue alpha
                                  8  x y z red green blue alpha intensity

Places are in world units. Colours are linear light: points that cover each
other add up, and intensities far above 1 are kept. Colours that are whole
numbers from 0 to 255 throughout are divided by 255. Empty lines and lines that
begin with "#" are left out. "plime info FILE" shows what was found.

  plime render stars.csv -o stars.exr --point-size 2
)";

constexpr std::string_view Shaders = R"(Shaders of your own

1. A tile processor. Hollywood/TileProgram runs a fragment shader in GLSL over a
   picture:

     uniform sampler2D frame;
     void main() {
         vec4 c = texture2D(frame, gl_TexCoord[0].xy);
         gl_FragColor = vec4(c.rgb * 0.5, c.a);
     }

     plime process in.exr -o out.exr \
           --with Hollywood/TileProgram -p code=@my.frag

   "frame" is the tile, gl_TexCoord[0].xy the place in it, from 0 to 1. Other
   uniforms are 0, other inputs have no value. No #version line means GLSL 1.20.

2. The body of a display. A file of the right name in a folder of --shader-dir,
   KROD_SHADER_PATH or ~/.local/share/krod/shaders takes the place of the
   display's own:

     Display/Blurred                  BlurredObject.frag
     Display/CMYK                     CMYK.frag
     Display/CurveAdjust              CurvesFilter.frag
     Display/Depth@HDRObjectDisplay   HDRObjectDisplay.frag
     Display/HSVAdjust                HueSatValueFiler.frag
     Display/PixelContours            PixelContours.frag
     Display/ProximityHDR             ProximityHDR.frag

   "plime shader KEY" shows the whole text that goes to the driver. Its first
   lines come from the parameters and are always written by the module; the file
   replaces the rest, which "plime shader KEY --body" writes alone:

     plime shader Display/CMYK --body > mine/CMYK.frag
     plime render demo:knot --display Display/CMYK --shader-dir mine -o knot.png

   Such a file has no #version line. Files above 64 KiB are not taken. -v says
   which files were.
)";

} // namespace

const std::vector<Topic>& helpTopics() {
    static const std::vector<Topic> all = {
        {"environment", "environment variables", Environment},
        {"networks", "how a picture is made, as a file", Networks},
        {"points", "the format of point lists", Points},
        {"shaders", "shaders of your own", Shaders},
    };
    return all;
}

} // namespace workbench
