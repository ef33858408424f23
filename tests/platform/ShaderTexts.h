// SPDX-License-Identifier: Apache-2.0
// Texts as modules hand them over, each of which some driver refuses.
#pragma once

#include <string>

/// Raises a vector to the power of a float, without a version line.
inline const std::string VectorPowerText =
    "uniform sampler2D frame;\nvoid main (void)\n{\nvec4 Color = texture2D(frame, gl_TexCoord[0].xy);\n"
    "\tgl_FragColor = pow(atan(Color)*2.0/3.141592,0.5);\n}\n";

/// Calls a constant array by a reserved word.
inline const std::string FilterText =
    "#version 150\nconst float filter[] = float[](0.5, 1.0);\nvoid main(void)\n{\n"
    "gl_FragColor = vec4(filter[0] + filter[1], float(filter.length()), 0.0, 1.0);\n}\n";

/// Subtracts a float from an int, without a version line.
inline const std::string IntegerArithmeticText =
    "const int FilterWidth = 5;\nuniform sampler2D frame;\nvoid main(void)\n{\nvec4 sum = vec4(0.0);\n"
    "for (int i = 0; i < FilterWidth; i++)\nsum += vec4(float(i-FilterWidth*0.5));\ngl_FragColor = "
    "sum/FilterWidth;\n}\n";

/// The vertex text of the displays.
inline const std::string QuadVertexText = "void main(void)\n{\n\tgl_Position = ftransform();\n}";
