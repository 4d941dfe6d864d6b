#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qorl::platform {

/// Sixteen fresh bytes that nobody else has. `kind`: see there.
enum class UuidKind : uint8_t {
    random, ///< version 4
    time    ///< version 1, of this machine
};
/// False, and `uuid` as it was, when the system has no randomness to give.
bool generateUuid(UuidKind kind, std::array<uint8_t, 16>& uuid);

/// A number that nobody outside can guess, as far as the system has randomness: for the seeds of hash tables.
uint64_t randomNumber();

/// Takes uuids from elsewhere; null takes them from the system again. For tests.
using UuidSource = bool (*)(UuidKind kind, std::array<uint8_t, 16>& uuid);
void setUuidSource(UuidSource source);

/// The program's arguments, the program's name first. UTF-8 as the system gives them, also inside a host.
std::vector<std::string> getCommandLine();

/// False when the environment has no such entry.
bool getEnvironment(const char* name, std::string& value);

/// The user's language and region as the system writes them, without code page: "de_AT", "en". "en" when the
/// system names none.
std::string getUserLocale();

std::string getUserName();
std::string getComputerName();
uint32_t getProcessId();
int32_t getProcessorCount();

/// Writes one line to where developers look: the standard error stream, or to what `setDebugOutput` was
/// given. From any thread; lines of two threads never mix.
void debugOutput(std::string_view text);

/// Sends the lines elsewhere; null sends them back to the standard error stream.
using DebugWriter = void (*)(std::string_view line, void* argument);
void setDebugOutput(DebugWriter writer, void* argument);

} // namespace qorl::platform
