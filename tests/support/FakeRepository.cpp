#include "support/FakeRepository.h"

#include <gtest/gtest.h>

namespace daywyn::test {

std::unique_ptr<FakeRepository> FakeRepository::make() {
    return std::make_unique<FakeRepository>();
}

std::unique_ptr<FakeRepository> FakeRepository::holding(PersistedState state) {
    auto repository = make();
    repository->stored_ = std::move(state);
    return repository;
}

std::unique_ptr<FakeRepository> FakeRepository::failingLoad(std::string message) {
    auto repository = make();
    repository->loadError_ = std::move(message);
    return repository;
}

Result<std::optional<PersistedState>> FakeRepository::load() {
    if (loadError_) {
        return Error{*loadError_};
    }
    return stored_;
}

Status FakeRepository::save(const PersistedStateView& state) {
    if (failuresLeft_ > 0) {
        --failuresLeft_;
        return Error{failureReason_};
    }
    saves_.push_back(PersistedState{state.version, state.tasks, state.preferences, state.reports});
    stored_ = saves_.back();
    return {};
}

void FakeRepository::failNextSaves(int count, std::string reason) {
    failuresLeft_ = count;
    failureReason_ = std::move(reason);
}

const PersistedState& FakeRepository::lastSaved() const {
    static const PersistedState kNothing;
    EXPECT_FALSE(saves_.empty()) << "nothing was saved";
    return saves_.empty() ? kNothing : saves_.back();
}

} // namespace daywyn::test
