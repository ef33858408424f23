// SPDX-License-Identifier: Apache-2.0
// The only unit that is compiled for each fault: FAULT names it, ENTRY the entry of the library.
#include "tests/mutants/Fault.h"

namespace krod {
class VInitialization;
}

extern constinit const Fault fault = Fault::FAULT;

/// The plug-in's answer to the host, see Catalogue.cpp.
int answer(krod::VInitialization* host);

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int ENTRY(krod::VInitialization* host) { return answer(host); }
#ifdef SECOND_ENTRY
EXPORTED int SECOND_ENTRY(krod::VInitialization* host) { return answer(host); }
#endif
#ifdef EXTRA_EXPORT
EXPORTED int mutantHelper() { return 1; }
#endif
#ifdef THREAD_LOCAL
namespace {
thread_local int mutantCounter = 0;
}
int countMutants() { return ++mutantCounter; }
#endif
#ifdef UNIQUE_SYMBOL
template <class T>
struct __attribute__((visibility("default"))) MutantBox {
    static inline T value{};
};
int uniqueValue() { return ++MutantBox<int>::value; }
#endif
