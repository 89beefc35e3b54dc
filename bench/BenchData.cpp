#include "BenchData.h"

#include <random>

namespace daywyn::bench {

namespace {

Uuid seededUuid(std::mt19937_64& rng) {
    Uuid id;
    for (auto& b : id.bytes) {
        b = static_cast<std::uint8_t>(rng());
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

const char* const kTitles[] = {
    "Write the quarterly planning summary for the design team",
    "Call Ama about the venue",
    "Review pull request for the export feature",
    "Prepare slides for Thursday's product review",
    "Pay the electricity bill",
    "Draft the onboarding email sequence",
    "Book dentist appointment",
    "Read chapter 4 of \"Thinking in Systems\"",
};

} // namespace

PersistedState makeState(int taskCount, int reportCount) {
    std::mt19937_64 rng(20261122);
    PersistedState state;
    const double base = 1793000000.0; // November 2026
    for (int i = 0; i < taskCount; ++i) {
        TaskItem t;
        t.id = seededUuid(rng);
        t.title = std::string(kTitles[i % 8]) + " #" + std::to_string(i);
        t.createdAt = Instant{base - 86400.0 * (i % 60) + (i % 977)};
        if (i % 2 == 0) {
            t.estimatedMinutes = 15 + (i % 8) * 5;
        }
        if (i % 3 == 0) {
            t.scheduledStart = Instant{base + 3600.0 * (i % 48)};
            t.scheduledEnd = Instant{base + 3600.0 * (i % 48) + 1800.0};
        } else if (i % 3 == 1) {
            t.scheduledDay = Instant{base + 86400.0 * (i % 5)};
        }
        if (i % 5 == 0) {
            t.reminderDate = Instant{base + 600.0 * (i % 100)};
        }
        if (i % 4 == 0) {
            t.isComplete = true;
            t.completedAt = Instant{base - 3600.0 * (i % 30)};
        }
        for (int s = 0; s < 3; ++s) {
            const double start = base - 86400.0 * (i % 30) + 3600.0 * s;
            t.sessions.push_back(
                WorkSession{seededUuid(rng), Instant{start}, Instant{start + 600.0 + (i % 1200)}});
        }
        if (i % 3 == 2) {
            t.checklist.emplace();
            for (int c = 0; c < 3; ++c) {
                t.checklist->push_back(
                    ChecklistItem{seededUuid(rng), "Checklist step " + std::to_string(c), c == 0});
            }
        }
        if (i % 10 == 0) {
            t.scheduledBudgetAlerts.insert(BudgetAlertKind::approaching);
        }
        if (i % 7 == 0) {
            t.recurrence = TaskRecurrence::daily;
            t.nextOccurrenceCreated = t.isComplete;
        }
        state.tasks.push_back(std::move(t));
    }
    for (int r = 0; r < reportCount; ++r) {
        DailyReport report;
        report.id = seededUuid(rng);
        report.day = Instant{base - 86400.0 * (r + 1)};
        report.generatedAt = Instant{base - 86400.0 * r - 3600.0};
        for (int line = 0; line < 6; ++line) {
            report.tasks.push_back(
                DailyTaskSummary{seededUuid(rng), kTitles[line], line % 2 == 0, 25, 1234.5 + line});
        }
        state.reports.push_back(std::move(report));
    }
    return state;
}

} // namespace daywyn::bench
