#pragma once

#include <memory>
#include <vector>

#include "store/TodayTaskStore.h"
#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"

namespace daywyn::test {

// A store over a fake repository, loaded at `now`, with the change listener counted.
struct StoreUnderTest {
    StoreUnderTest(std::unique_ptr<FakeRepository> repository, Instant now,
                   const Calendar& calendar)
        : repo(repository.get())
        , store(std::move(repository), now, calendar) {
        store.setOnMeaningfulChange([this](const auto&, const auto&) { ++changes; });
    }
    StoreUnderTest(std::vector<TaskItem> tasks, Instant now, const Calendar& calendar,
                   AppPreferences preferences = {}, std::vector<DailyReport> reports = {})
        : StoreUnderTest(FakeRepository::holding(PersistedState{PersistedState::kCurrentVersion,
                                                                std::move(tasks), preferences,
                                                                std::move(reports)}),
                         now, calendar) {}

    const TaskItem& at(std::size_t index) const { return store.tasks().at(index); }

    FakeRepository* repo;
    TodayTaskStore store;
    int changes = 0;
};

} // namespace daywyn::test
