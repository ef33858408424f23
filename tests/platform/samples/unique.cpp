// SPDX-License-Identifier: Apache-2.0
// Defines the kind of symbol that g++ makes of a template's static object and that keeps a library loaded.
// Written in assembler, because other compilers never make one.

__asm__(R"(
    .pushsection .data
    .globl _ZN6sample4onceE
    .type _ZN6sample4onceE, %gnu_unique_object
    .size _ZN6sample4onceE, 4
_ZN6sample4onceE:
    .long 1
    .popsection
)");
