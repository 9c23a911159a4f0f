// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>
#include <locale.h>

namespace Kestrel::Formats {

/// Sets the locale of the thread to C.UTF-8, in which `wcwidth` knows more than ASCII.
class Utf8Locale {
 public:
  Utf8Locale() : locale_(newlocale(LC_ALL_MASK, "C.UTF-8", nullptr)) {
    EXPECT_NE(locale_, nullptr);
    previous_ = uselocale(locale_);
  }
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;
  ~Utf8Locale() {
    uselocale(previous_);
    freelocale(locale_);
  }

 private:
  locale_t locale_;
  locale_t previous_;
};

}  // namespace Kestrel::Formats
