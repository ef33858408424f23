// SPDX-License-Identifier: Apache-2.0
#include "tests/mutants/Fault.h"

void misbehave() {}
void forkAndHang() {}
