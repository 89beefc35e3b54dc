#include "ui/qt/TodayModel.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include "support/FakeRepository.h"
#include "support/TaskBuilder.h"
#include "support/qt/QtTestSupport.h"

namespace daywyn {
namespace {

using test::TaskBuilder;

class TodayModelTest : public ::testing::Test {
protected:
    // Saturday 21 November 2026, 09:00 in Berlin.
    TodayModelTest()
        : berlin(test::berlin())
        , clock(test::at(berlin, 2026, 11, 21, 9)) {}

    TodayTaskStore& storeWith(std::vector<TaskItem> tasks) {
        PersistedState state;
        state.tasks = std::move(tasks);
        store = std::make_unique<TodayTaskStore>(test::FakeRepository::holding(state), clock.now(),
                                                 berlin);
        model = std::make_unique<TodayModel>(*store, berlin, clock.function());
        return *store;
    }

    // "header:Today", "task:Write", "empty" …: the rows as the screen lists them.
    std::vector<std::string> rows() const {
        std::vector<std::string> out;
        for (int i = 0; i < model->rowCount(); ++i) {
            const QModelIndex at = model->index(i);
            const QString kind = at.data(TodayModel::KindRole).toString();
            QString text = kind;
            if (kind == QLatin1String("header")) {
                text += QLatin1Char(':') + at.data(TodayModel::HeaderTitleRole).toString() +
                        QLatin1Char(' ') + at.data(TodayModel::HeaderCountRole).toString();
            } else if (kind == QLatin1String("task")) {
                text += QLatin1Char(':') + at.data(TodayModel::TitleRole).toString();
            }
            out.push_back(text.toStdString());
        }
        return out;
    }

    QString idOf(const std::string& title) const {
        for (const TaskItem& task : store->tasks()) {
            if (task.title == title) {
                return QString::fromStdString(task.id.text());
            }
        }
        return {};
    }

    Calendar berlin;
    test::ManualClock clock;
    std::unique_ptr<TodayTaskStore> store;
    std::unique_ptr<TodayModel> model;
};

TEST_F(TodayModelTest, ListsTheDaysSectionsInOrderAndHidesEmptyOnes) {
    const Instant nine = clock.now();
    storeWith({
        TaskBuilder("Upcoming talk").createdAt(nine).plannedFor(nine + 3 * 86400),
        TaskBuilder("Write").createdAt(nine),
        TaskBuilder("Old errand").createdAt(nine - 2 * 86400),
        TaskBuilder("Ship it").createdAt(nine).pinned(1),
        TaskBuilder("Stretch").createdAt(nine).completedAt(nine - 60),
    });
    EXPECT_EQ(rows(), (std::vector<std::string>{
                          "header:Priorities 1", "task:Ship it", "header:Today 1", "task:Write",
                          "header:Carried over 1", "task:Old errand", "header:Upcoming 1",
                          "task:Upcoming talk", "header:Completed today 1", "task:Stretch"}));
    EXPECT_EQ(model->dayTitle(), QStringLiteral("Saturday 21 November"));
    EXPECT_EQ(model->openCount(), 4);
}

TEST_F(TodayModelTest, AnEmptyTodayKeepsItsHeaderWithAnEmptyState) {
    storeWith({TaskBuilder("Later").createdAt(clock.now()).plannedFor(clock.now() + 86400)});
    EXPECT_EQ(rows(), (std::vector<std::string>{"header:Today 0", "empty", "header:Upcoming 1",
                                                "task:Later"}));
    // Moving the upcoming task to today refills the section at once.
    model->doToday(idOf("Later"));
    EXPECT_EQ(rows(), (std::vector<std::string>{"header:Today 1", "task:Later"}));
    model->moveToTomorrow(idOf("Later"));
    EXPECT_EQ(rows(), (std::vector<std::string>{"header:Today 0", "empty", "header:Upcoming 1",
                                                "task:Later"}));
}

TEST_F(TodayModelTest, AddFieldPreviewsWhatItRecognisedAndAddsThroughTheParser) {
    storeWith({});
    const QVariantList chips =
        model->previewQuickAdd(QStringLiteral("Call Ama tomorrow at 10 for 20 minutes"));
    QStringList texts;
    for (const QVariant& chip : chips) {
        texts << chip.toMap().value(QStringLiteral("text")).toString();
    }
    EXPECT_EQ(texts, (QStringList{"Tomorrow", "10:00", "20 min"}));
    EXPECT_TRUE(model->previewQuickAdd(QStringLiteral("Water plants")).isEmpty());

    EXPECT_TRUE(model->addFromText(QStringLiteral("Call Ama tomorrow at 10 for 20 minutes")));
    ASSERT_EQ(store->tasks().size(), 1u);
    EXPECT_EQ(store->tasks()[0].title, "Call Ama");
    EXPECT_EQ(store->tasks()[0].estimatedMinutes, 20);

    // A line with nothing left for a title is refused with the store's sentence.
    EXPECT_FALSE(model->addFromText(QStringLiteral("tomorrow")));
    EXPECT_EQ(model->errorMessage(), QStringLiteral("Give the task a title."));
    EXPECT_EQ(store->tasks().size(), 1u);
}

TEST_F(TodayModelTest, RowsShowTimeAgainstEstimateAndTheRunningClock) {
    const Instant nine = clock.now();
    storeWith({TaskBuilder("Draft")
                   .createdAt(nine)
                   .estimate(25)
                   .checklistItem("Outline", true)
                   .checklistItem("Body")
                   .session(nine - 3600, nine - 3600 + 18 * 60)});
    const QString id = idOf("Draft");
    model->toggleTimer(id);
    clock.advance(65);
    const QModelIndex row = model->index(model->rowOfTask(id));
    EXPECT_EQ(row.data(TodayModel::TimeRole).toString(), QStringLiteral("19 / 25 min"));
    EXPECT_EQ(row.data(TodayModel::ClockRole).toString(), QStringLiteral("19:05"));
    EXPECT_EQ(row.data(TodayModel::DetailRole).toString(), QStringLiteral("1/2"));
    EXPECT_TRUE(row.data(TodayModel::IsRunningRole).toBool());
    EXPECT_EQ(model->runningClock(), QStringLiteral("19:05"));
}

TEST_F(TodayModelTest, TicksOnlyWhileTheDrawerIsShown) {
    storeWith({TaskBuilder("Focus").createdAt(clock.now()).running(clock.now())});
    QSignalSpy ticks(model.get(), &TodayModel::tick);
    model->setLive(false);
    ticks.clear();
    QTest::qWait(1300);
    EXPECT_EQ(ticks.count(), 0);
    model->setLive(true);
    EXPECT_TRUE(ticks.wait(3000));
}

TEST_F(TodayModelTest, DeleteOffersUndoAndRefusalsAreShown) {
    const Instant nine = clock.now();
    storeWith({TaskBuilder("A").createdAt(nine).pinned(1),
               TaskBuilder("B").createdAt(nine).pinned(2),
               TaskBuilder("C").createdAt(nine).pinned(3), TaskBuilder("D").createdAt(nine)});
    model->togglePin(idOf("D"));
    EXPECT_EQ(model->errorMessage(),
              QStringLiteral("You can pin up to three priorities. Unpin one first."));

    model->deleteTask(idOf("D"));
    EXPECT_EQ(model->errorMessage(), QString());
    EXPECT_EQ(model->undoDescription(), QStringLiteral("Delete D"));
    EXPECT_EQ(model->rowOfTask(idOf("D")), -1);
    model->undo();
    EXPECT_NE(model->rowOfTask(idOf("D")), -1);
    model->undo();
    EXPECT_EQ(model->errorMessage(), QStringLiteral("There is nothing to undo."));
}

TEST_F(TodayModelTest, ASaveThatFailsIsShownUntilTheNextOneSucceeds) {
    auto repository = test::FakeRepository::make();
    test::FakeRepository* fake = repository.get();
    store = std::make_unique<TodayTaskStore>(std::move(repository), clock.now(), berlin);
    model = std::make_unique<TodayModel>(*store, berlin, clock.function());
    const QString id = QString::fromStdString(store->tasks().front().id.text());

    fake->failNextSaves(1, "No space left on device");
    model->toggleTimer(id);
    EXPECT_EQ(model->persistenceError(),
              QStringLiteral("Daywyn could not save changes: No space left on device"));
    model->toggleTimer(id);
    EXPECT_EQ(model->persistenceError(), QString());
}

} // namespace
} // namespace daywyn
