// Parsed tables cached by path, so a preset used again is not read again.
// An entry is reused while the file keeps its size and modification time; a
// file that failed to read is likewise not read again until one of them
// changes.
// Safe to call from several threads.
#pragma once

#include "LutKernel.h"

#include <memory>
#include <string>

// The prepared table of the LUT file at path (local 8-bit encoding), or null
// when it cannot be read; the reasons are printed as readLutFile prints them.
std::shared_ptr<const LutKernel> loadLutCached(const std::string& path);

// Forgets every cached table and every remembered failure.
void clearLutCache();
