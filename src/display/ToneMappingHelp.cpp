// SPDX-License-Identifier: Apache-2.0
#include "display/ToneMappingHelp.h"

#include "host/core/VObject.h"

namespace plime::display {

std::string toneMappingHelp(int level) {
    if (level != krod::VObject::Detailed) return "Perform non-linear tone mapping of pixel intensities.";
    return "Perform simple <A HREF=\"https://en.wikipedia.org/wiki/Tone_mapping\">tone mapping</A> of the "
           "form "
           "<BR><center> <I>I(x) = [ x/(x+&beta;) ] <SUP>&epsilon;</SUP></I></center><BR>"
           "where <I>x</I> is the pixel intensity, <I>&beta;=10<SUP>offset</SUP></I> an offset parameter and "
           "<I>&epsilon;=10<SUP>exponent</SUP></I> an exponent."
           "This mapping allows to reduce intensity excess values [0,&infin;] to the range [0,1]. "
           "Intensity excess values can happen when doing accumulation-mode rendering of point sets, for "
           "instance. "
           "Nonlinear tone-mapping allows to see all image areas which would otherwise be over-exposed. ";
}

} // namespace plime::display
