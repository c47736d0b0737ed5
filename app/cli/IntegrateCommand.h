#pragma once

namespace wendrel {

// `wendrel integrate [--remove]`: adds "Convert with Wendrel", "Wendrel Tools" and "Wendrel
// Actions" to the context menus of the common file managers, calling this executable, or takes
// them away. Prints one line per file manager, or a JSON report.
int runIntegrateCommand(bool remove, bool json);

}  // namespace wendrel
