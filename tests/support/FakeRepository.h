#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/TaskRepository.h"

namespace daywyn::test {

// A repository in memory that records every save and fails on demand. The store owns
// it; tests keep the raw pointer from make() to look inside:
//   auto repo = FakeRepository::make(); auto* fake = repo.get();
//   TodayTaskStore store(std::move(repo), now, calendar);
class FakeRepository : public TaskRepository {
public:
    // Nothing stored yet.
    static std::unique_ptr<FakeRepository> make();
    // A stored state that load() returns.
    static std::unique_ptr<FakeRepository> holding(PersistedState state);
    // A stored state that cannot be used: load() fails with this sentence.
    static std::unique_ptr<FakeRepository> failingLoad(std::string message);

    Result<std::optional<PersistedState>> load() override;
    bool loadedCurrentFormat() const override { return currentFormat_; }
    // Makes load() report a file in the current format (JSONTaskRepository's answer
    // for a version 2 file), so the store may skip its start-up save.
    void setLoadsCurrentFormat(bool current) { currentFormat_ = current; }
    Status save(const PersistedStateView& state) override;

    // The next `count` saves fail with `reason` and record nothing.
    void failNextSaves(int count, std::string reason = "No space left on device");

    // Every successful save, oldest first.
    const std::vector<PersistedState>& saves() const { return saves_; }
    int saveCount() const { return static_cast<int>(saves_.size()); }
    // The last successful save; fails the test when there was none.
    const PersistedState& lastSaved() const;

private:
    std::optional<PersistedState> stored_;
    std::optional<std::string> loadError_;
    int failuresLeft_ = 0;
    bool currentFormat_ = false;
    std::string failureReason_;
    std::vector<PersistedState> saves_;
};

} // namespace daywyn::test
