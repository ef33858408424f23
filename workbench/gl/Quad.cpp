// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/Quad.h"

#include <epoxy/gl.h>

namespace workbench {

void drawFullScreenQuad(double depth) {
    glBegin(GL_QUADS);
    glTexCoord2d(0, 0);
    glVertex3d(-1, -1, depth);
    glTexCoord2d(1, 0);
    glVertex3d(1, -1, depth);
    glTexCoord2d(1, 1);
    glVertex3d(1, 1, depth);
    glTexCoord2d(0, 1);
    glVertex3d(-1, 1, depth);
    glEnd();
}

} // namespace workbench
