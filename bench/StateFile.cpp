// The state file on the real disk: load + decode, and encode + durable atomic save,
// against the floor of writing the same bytes to a fresh file. Files go to
// $DAYWYN_BENCH_DIR (default /var/tmp/daywyn-bench), which must not be a tmpfs; the
// state files stay there as state-<tasks>.json for bench/python_json_baseline.py.
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include "BenchData.h"
#include "model/RecordJson.h"
#include "persistence/AtomicFile.h"
#include "persistence/JSONTaskRepository.h"
#include "persistence/PosixFileSystem.h"

namespace {

using namespace daywyn;

std::string benchFolder() {
    const char* dir = std::getenv("DAYWYN_BENCH_DIR");
    const std::string path = dir && *dir ? dir : "/var/tmp/daywyn-bench";
    std::filesystem::create_directories(path);
    return path;
}

// A repository over its own folder per size, so the sizes never share files.
std::unique_ptr<JSONTaskRepository> repositoryFor(int tasks) {
    const std::string folder = benchFolder() + "/repository-" + std::to_string(tasks);
    const Instant fixed{1793000000.0};
    return std::make_unique<JSONTaskRepository>(
        folder + "/daywyn.json", std::make_shared<PosixFileSystem>(), [fixed] { return fixed; },
        [fixed] { return fixed; });
}

// Writes the shared copy the python baseline reads and returns the state.
PersistedState preparedState(int tasks) {
    PersistedState state = bench::makeState(tasks);
    PosixFileSystem fs;
    const std::string path = benchFolder() + "/state-" + std::to_string(tasks) + ".json";
    if (!writeFileAtomically(fs, path, encodeStateFile(state))) {
        std::abort();
    }
    return state;
}

void LoadState(benchmark::State& s) {
    const int tasks = static_cast<int>(s.range(0));
    auto repository = repositoryFor(tasks);
    if (!repository->save(preparedState(tasks))) {
        s.SkipWithError("could not save");
        return;
    }
    for (auto _ : s) {
        auto loaded = repository->load();
        if (!loaded || !loaded.value()) {
            s.SkipWithError("could not load");
            break;
        }
        benchmark::DoNotOptimize(loaded);
    }
}
BENCHMARK(LoadState)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The one load a program makes when it starts: in a new process each time, so that
// the parser's index, the file's pages and every record are memory touched for the
// first time, as they are at start-up. Includes starting and ending the process.
void LoadStateInNewProcess(benchmark::State& s) {
    const int tasks = static_cast<int>(s.range(0));
    if (!repositoryFor(tasks)->save(preparedState(tasks))) {
        s.SkipWithError("could not save");
        return;
    }
    for (auto _ : s) {
        const pid_t child = ::fork();
        if (child == 0) {
            auto loaded = repositoryFor(tasks)->load();
            ::_exit(loaded && loaded.value() ? 0 : 1);
        }
        int status = 0;
        if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
            WEXITSTATUS(status) != 0) {
            s.SkipWithError("could not load in a new process");
            break;
        }
    }
}
BENCHMARK(LoadStateInNewProcess)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void SaveState(benchmark::State& s) {
    const int tasks = static_cast<int>(s.range(0));
    auto repository = repositoryFor(tasks);
    const PersistedState state = preparedState(tasks);
    for (auto _ : s) {
        if (auto saved = repository->save(state); !saved) {
            s.SkipWithError(saved.error().c_str());
            break;
        }
    }
}
BENCHMARK(SaveState)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The same save as a plain replace (temporary file, rename, folder flush) without
// keeping the previous file's blocks alive: the alternative the save path avoids.
void SaveStatePlainReplace(benchmark::State& s) {
    const int tasks = static_cast<int>(s.range(0));
    const std::string path = benchFolder() + "/plain-" + std::to_string(tasks) + ".json";
    const PersistedState state = preparedState(tasks);
    PosixFileSystem fs;
    for (auto _ : s) {
        if (auto saved = writeFileAtomically(fs, path, encodeStateFile(state), 0600); !saved) {
            s.SkipWithError(saved.error().c_str());
            break;
        }
    }
}
BENCHMARK(SaveStatePlainReplace)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The floor: the encoded bytes written to a fresh name and flushed; no encoding, no
// rename, nothing freed. The files are removed after the timed loop, so that freeing
// them does not land in a timed flush.
void FreshFileFloor(benchmark::State& s) {
    const int tasks = static_cast<int>(s.range(0));
    const std::string bytes = encodeStateFile(bench::makeState(tasks));
    const std::string prefix = benchFolder() + "/fresh-" + std::to_string(tasks) + "-";
    PosixFileSystem fs;
    int written = 0;
    for (auto _ : s) {
        if (writeNewFile(fs, prefix + std::to_string(written++), bytes, 0600) != 0) {
            s.SkipWithError("could not write");
            break;
        }
    }
    for (int i = 0; i < written; ++i) {
        fs.remove(prefix + std::to_string(i));
    }
    s.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(FreshFileFloor)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
