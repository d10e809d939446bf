#pragma once

namespace bench {

// Registers the measurements of import and cutting.
void addImportBenchmarks();

} // namespace bench
