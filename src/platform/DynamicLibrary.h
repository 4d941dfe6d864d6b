#pragma once

#include <string>

namespace qorl::platform {

/// A loaded library: opaque, null is none.
using LibraryHandle = void*;

/// Loads the library at `path`, with every symbol resolved at once and none shared with others. Null on
/// failure, with the loader's text in `error`.
LibraryHandle loadLibrary(const std::string& path, std::string& error);

/// Null when there is no such symbol.
void* findSymbol(LibraryHandle library, const char* name);

/// Frees one load of it. Null is allowed.
void freeLibrary(LibraryHandle library);

/// What modules end in: ".so".
const char* getLibraryExtension();

} // namespace qorl::platform
