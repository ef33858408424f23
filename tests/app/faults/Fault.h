// SPDX-License-Identifier: Apache-2.0
// What the parts of the library of faults share.
#pragma once

/// Counts the call and does what KROD_FAULT asks of it. The error that it is to fail with; 0: none.
extern "C" int krodFault(const char* call);
