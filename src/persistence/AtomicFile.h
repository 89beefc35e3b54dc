#pragma once

#include <string>
#include <string_view>

#include "base/Result.h"
#include "persistence/FileSystem.h"

namespace daywyn {

// Writes every byte to fd, going on after short writes and interruptions.
// 0 or the errno of the failure (ENOSPC when the system stops taking bytes).
int writeAll(FileSystem& fs, int fd, std::string_view bytes);

// Writes a whole new file: create (failing when the name is taken), write every byte,
// flush to disk, close. A failed file is removed again. 0 or the errno of the failure.
int writeNewFile(FileSystem& fs, const std::string& path, std::string_view bytes, unsigned mode);

// The folder part of a path ("." for a bare name) and its last component.
std::string parentDirectory(std::string_view path);
std::string lastPathComponent(std::string_view path);

// Replaces the file at path with exactly these bytes so that a crash leaves either the
// old or the new file, never a mix: a temporary file in the same folder, flushed, then
// renamed over the target, then the folder flushed. A new file gets `mode` (less the
// umask). On failure the old file is untouched and the Error is the system's reason.
Status writeFileAtomically(FileSystem& fs, const std::string& path, std::string_view bytes,
                           unsigned mode = 0666);

} // namespace daywyn
