#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>

class BaseDataImporter;

// What every fuzz program of the readers shares. This file's LLVMFuzzerInitialize
// gives each program a Qt application with the tool's identity, as the project
// store needs it, and a private folder for the inputs, since the readers take paths.
namespace fuzzsupport {

// Writes one input to a file of that name in the private folder, replacing
// the one before, and returns its path.
QString writeInput(const uint8_t* data, size_t size, const QString& fileName);

// Imports one input, written to a file of that name, into line 0 of a new
// project. On this thread: a worker would only make the findings harder to read.
void importInput(BaseDataImporter& importer, const uint8_t* data, size_t size, const QString& fileName);

} // namespace fuzzsupport
