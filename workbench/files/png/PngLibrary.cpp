// SPDX-License-Identifier: Apache-2.0
#include "workbench/files/png/PngLibrary.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace workbench {
namespace {

/// A damaged file may cause one for each row.
constexpr std::size_t MostWarnings = 8;

} // namespace

PngSession::PngSession(Use use) : use(use) {
    png = use == Use::Read ? png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning)
                           : png_create_write_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    head = png ? png_create_info_struct(png) : nullptr;
    if (!head) {
        if (png)
            use == Use::Read ? png_destroy_read_struct(&png, nullptr, nullptr)
                             : png_destroy_write_struct(&png, nullptr);
        throw std::bad_alloc();
    }
    png_set_benign_errors(png, 1);
}

PngSession::~PngSession() {
    if (use == Use::Read)
        png_destroy_read_struct(&png, &head, nullptr);
    else
        png_destroy_write_struct(&png, &head);
}

void PngSession::onError(png_structp png, png_const_charp text) {
    auto& session = *static_cast<PngSession*>(png_get_error_ptr(png));
    std::snprintf(session.message.data(), session.message.size(), "%s", text);
    png_longjmp(png, 1);
}

void PngSession::onWarning(png_structp png, png_const_charp text) {
    auto& told = static_cast<PngSession*>(png_get_error_ptr(png))->told;
    try {
        if (told.size() < MostWarnings && std::find(told.begin(), told.end(), text) == told.end())
            told.emplace_back(text);
    } catch (const std::bad_alloc&) { // a word less
    }
}

} // namespace workbench
