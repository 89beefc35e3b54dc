#include "calendar/qt/EdsCalendarSource.h"

#include <future>
#include <glib.h>
#include <mutex>
#include <thread>

#include <QCoreApplication>
#include <QPointer>

#include "calendar/qt/MainThreadCompletion.h"
#include "calendar/system/EdsCalendarReader.h"

namespace daywyn {

struct EdsCalendarSource::State {
    explicit State(Calendar calendar)
        // No time limit on a backend coming online: a local calendar is there at once,
        // a network one is waited for on the service thread, not on the main thread.
        : reader(std::make_unique<EdsCalendarReader>(std::move(calendar), true,
                                                     EdsCalendarReader::kWaitForever)) {}

    std::mutex mutex;
    // Made on the main thread, used and let go of on the service thread.
    std::unique_ptr<EdsCalendarReader> reader;
    // Every call into the calendar service runs on one thread of our own, whose GLib
    // context is its default: the registry's and views' signals are dispatched there,
    // never on a Qt worker whose context nobody runs.
    GMainContext* context = g_main_context_new();
    GMainLoop* loop = g_main_loop_new(context, FALSE);
    std::thread thread;
    // Read and written on the main thread only.
    std::function<void()> onChange;
    std::weak_ptr<State> self;

    ~State() {
        g_main_loop_unref(loop);
        g_main_context_unref(context);
    }

    // Runs on the service thread until the loop quits, then lets go of the service's
    // objects there.
    void run() {
        g_main_context_push_thread_default(context);
        g_main_loop_run(loop);
        {
            const std::lock_guard lock(mutex);
            reader.reset();
        }
        g_main_context_pop_thread_default(context);
    }

    CalendarSnapshot read(const CalendarQuery& query) {
        const std::lock_guard lock(mutex);
        return reader ? reader->read(query) : CalendarSnapshot{};
    }

    // Runs `work` on the service thread.
    static void invoke(const std::shared_ptr<State>& state, std::function<void(State&)> work) {
        struct Job {
            std::weak_ptr<State> state;
            std::function<void(State&)> work;
        };
        auto* pending = new Job{state, std::move(work)};
        g_main_context_invoke_full(
            state->context, G_PRIORITY_DEFAULT,
            [](gpointer data) -> gboolean {
                auto* job = static_cast<Job*>(data);
                if (auto alive = job->state.lock()) {
                    job->work(*alive);
                }
                return G_SOURCE_REMOVE;
            },
            pending, [](gpointer data) { delete static_cast<Job*>(data); });
    }
};

EdsCalendarSource::EdsCalendarSource(Calendar calendar, QObject* parent)
    : QObject(parent)
    , state_(std::make_shared<State>(std::move(calendar))) {
    state_->self = state_;
    // Signals arrive on the service thread; the handler runs on the main thread.
    std::weak_ptr<State> weak = state_;
    state_->reader->setChangeHandler([weak] {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [weak] {
                if (auto alive = weak.lock(); alive && alive->onChange) {
                    alive->onChange();
                }
            },
            Qt::QueuedConnection);
    });
    State* state = state_.get();
    state_->thread = std::thread([state] { state->run(); });
}

EdsCalendarSource::~EdsCalendarSource() {
    // A read stuck on a dead service is cancelled rather than waited for forever.
    state_->reader->cancel();
    state_->onChange = nullptr;
    // Quitting through the loop's own queue also works when it has not started yet.
    g_main_context_invoke(
        state_->context,
        [](gpointer loop) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(loop));
            return G_SOURCE_REMOVE;
        },
        state_->loop);
    state_->thread.join();
}

void EdsCalendarSource::read(const CalendarQuery& query, Completion done) {
    QPointer<EdsCalendarSource> self = this;
    // The completion comes back to the main thread.
    State::invoke(state_,
                  [query, self = std::move(self), done = std::move(done)](State& state) mutable {
                      completeOnMainThread(std::move(self), std::move(done), state.read(query));
                  });
}

CalendarSnapshot EdsCalendarSource::readNow(const CalendarQuery& query) {
    std::promise<CalendarSnapshot> answer;
    auto future = answer.get_future();
    State::invoke(state_, [&answer, query](State& state) { answer.set_value(state.read(query)); });
    return future.get();
}

void EdsCalendarSource::setChangeHandler(std::function<void()> onChange) {
    state_->onChange = std::move(onChange);
}

} // namespace daywyn
