#pragma once

#include "graphics/UBitmap.h"

#include <gtest/gtest.h>
#include <string_view>

namespace qorl::testing {

/// Compares the pixels with tests/golden/NAME.png: every pixel must be the same.
///
/// On a difference the actual picture and one that marks the differing pixels are written below golden/ in
/// the build folder, and the message names them. With QORL_UPDATE_GOLDEN=1 in the environment a differing or
/// missing reference is written, and the comparison still fails. Pictures made with other versions of Cairo,
/// Pango, FreeType or fontconfig than tests/golden/versions.txt records fail with a message that says so.
::testing::AssertionResult matchesGolden(UBitmap& actual, std::string_view name);
::testing::AssertionResult matchesGolden(GraphicsImage& actual, std::string_view name);

} // namespace qorl::testing

/// `picture` is a `UBitmap&` or a `GraphicsImage&`.
#define EXPECT_GOLDEN(picture, name) EXPECT_TRUE(::qorl::testing::matchesGolden(picture, name))
