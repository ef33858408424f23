// SPDX-License-Identifier: Apache-2.0
// Runs every test of the program under a locale with decimal commas.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale>

namespace {

class CommaLocale : public testing::Environment {
public:
    /// Ends the program without the locale: a failed environment would only skip the tests.
    void SetUp() override {
        ::setenv("LOCPATH", KROD_TEST_LOCALE_FOLDER, 1);
        if (!std::setlocale(LC_ALL, KROD_TEST_LOCALE) ||
            std::strcmp(std::localeconv()->decimal_point, ",") != 0) {
            std::puts("There is no locale " KROD_TEST_LOCALE
                      " with decimal commas: install the package `locales`.");
            std::exit(EXIT_FAILURE);
        }
        std::locale::global(std::locale(KROD_TEST_LOCALE));
    }
};

[[maybe_unused]] testing::Environment* const registered = testing::AddGlobalTestEnvironment(new CommaLocale);

} // namespace
