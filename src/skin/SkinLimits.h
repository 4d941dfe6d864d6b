#pragma once

#include <cstddef>
#include <cstdint>

/// What a skin document may ask for. Documents are untrusted: at each of these bounds loading or building
/// stops with an error that names the element.
namespace qorl::SkinLimits {

/// Bytes of a document, included files counted in.
inline constexpr int64_t documentBytes = int64_t{64} << 20;
/// Bytes of one tag, comment or processing instruction.
inline constexpr int64_t tokenBytes = int64_t{1} << 20;
/// Bytes of element records and their texts.
inline constexpr size_t recordBytes = size_t{256} << 20;
/// Elements of one file, skipped ones counted in.
inline constexpr int32_t elements = 1'000'000;
/// Elements inside each other in one file.
inline constexpr int32_t nesting = 256;
inline constexpr int32_t attributesOfElement = 128;

/// The document itself is level 0.
inline constexpr int32_t includeLevel = 2;
inline constexpr int32_t includedFiles = 1000;

/// Siblings that a size expression may go through.
inline constexpr int32_t sizeDepth = 10;
/// Siblings, and operands a few at a time, looked at while all size expressions of a document are evaluated.
inline constexpr int64_t sizeSteps = 4'000'000;

/// Bitmaps that one is made from by way of others.
inline constexpr int32_t bitmapDepth = 32;

/// Bytes of the pixels that a document holds at one time.
inline constexpr int64_t bitmapBytes = int64_t{256} << 20;
/// The same of all files that are decoded for a document, each as often as it is.
inline constexpr int64_t decodedBytes = int64_t{1} << 30;
/// The same of the files that are kept for further sections while a template is built.
inline constexpr int64_t partSourceBytes = int64_t{128} << 20;

/// Rounds of one `for` element.
inline constexpr int64_t loopRounds = 100'000;
/// Elements, templates inside templates counted in, that the builder stands inside of.
inline constexpr int32_t buildDepth = 400;
/// Elements and loop rounds that one build may go through.
inline constexpr int64_t buildSteps = 1'000'000;
/// Views and values that one build may make.
inline constexpr int32_t builtViews = 200'000;

/// Bytes of titles, names and tips that one build may give to views.
inline constexpr int64_t builtTextBytes = int64_t{64} << 20;
/// Variables at one time.
inline constexpr size_t variables = 256;
/// Set conditions at one time.
inline constexpr size_t conditions = 1000;
/// Bytes of texts that one build may look through for variables and conditions, each time for each variable.
inline constexpr int64_t textWork = int64_t{1} << 30;
/// Bytes of a text after its variables were put in.
inline constexpr size_t substitutedBytes = 64 * 1024;

/// Errors that are kept of one load or build, and other findings.
inline constexpr size_t diagnostics = 1000;
/// Of the text of one finding, which may quote the document.
inline constexpr size_t diagnosticBytes = 1000;

} // namespace qorl::SkinLimits
