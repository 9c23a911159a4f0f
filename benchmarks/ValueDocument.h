#pragma once

#include <cstddef>
#include <string>

namespace Kestrel::Benchmarks {

/// A result document with a list of so many records, a field to a line.
std::string MakeValueDocument(std::size_t count);

}  // namespace Kestrel::Benchmarks
