#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"
#include "support/TaskBuilder.h"

namespace daywyn::test {

// The repository at its default place, which the test runner makes a temporary folder.
inline std::string stateFilePath() {
    auto path = JSONTaskRepository::defaultFilePath();
    EXPECT_TRUE(path.ok());
    return path.ok() ? path.value() : std::string();
}

// Migration happens on a Sunday morning in New York; a bad file is found at 03:15 in
// Berlin on the night the clocks go forward (01:15 UTC).
inline Instant migrationInstant() {
    return at(newYork(), 2026, 3, 8, 9, 0);
}
inline Instant failureInstant() {
    return at(berlin(), 2026, 3, 29, 3, 15);
}

inline std::unique_ptr<JSONTaskRepository>
makeRepository(std::shared_ptr<FileSystem> fs = std::make_shared<PosixFileSystem>(),
               std::string path = stateFilePath()) {
    return std::make_unique<JSONTaskRepository>(
        std::move(path), std::move(fs), [] { return migrationInstant(); },
        [] { return failureInstant(); });
}

inline std::string readBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

inline void writeBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string fixture(const std::string& name) {
    return readBytes(std::filesystem::path(DAYWYN_TEST_DATA_DIR) / "state" / name);
}

// Names in a folder, sorted, for "nothing was left behind" checks.
inline std::vector<std::string> folderContents(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// A state with every optional field present, whole-second dates.
PersistedState everyFieldState();

} // namespace daywyn::test
