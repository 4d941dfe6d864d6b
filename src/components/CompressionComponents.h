#pragma once

namespace qorl {

class FComponentRegistry;

/// Enters the library's engines of compression in the directory, so that they are found by category as those
/// of modules are. Those that stand there already stay. The start-up does it once the settings are loaded.
void registerCompressionEngines(FComponentRegistry& registry);

} // namespace qorl
