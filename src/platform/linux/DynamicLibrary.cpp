#include "platform/DynamicLibrary.h"

#include <dlfcn.h>

namespace qorl::platform {

LibraryHandle loadLibrary(const std::string& path, std::string& error) {
    LibraryHandle library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char* text = dlerror();
        error = text ? text : "unknown error of the loader";
    }
    return library;
}

void* findSymbol(LibraryHandle library, const char* name) {
    return library ? dlsym(library, name) : nullptr;
}

void freeLibrary(LibraryHandle library) {
    if (library)
        dlclose(library);
}

const char* getLibraryExtension() {
    return ".so";
}

} // namespace qorl::platform
