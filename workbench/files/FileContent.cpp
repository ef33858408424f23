// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/FileContent.h"

namespace workbench {

FileContent::~FileContent() = default;

} // namespace workbench
