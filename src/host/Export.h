// SPDX-License-Identifier: Apache-2.0
// How host types cross the boundary between Krod's libraries and a plug-in.
//
// Every function of the contract, but for destructors, overrides and what is defaulted, carries one line:
// [thread · OpenGL context · ownership · failure].
//   thread     any: may be called from any thread · load: the thread that loads the library
//              host: the host's rendering thread
//   context    gl: an OpenGL compatibility context is current · nothing said: none needed
//   ownership  borrows, copies, shares (reference counted) or gives an argument or result; nothing said: values
//   failure    what is thrown or returned; "never fails" is said as noexcept
#pragma once

/// Exported from the host library that defines it, whatever the visibility of the including unit. Exceptions,
/// type identities and virtual tables of host types must be the same on both sides.
#define KROD_API __attribute__((visibility("default")))
