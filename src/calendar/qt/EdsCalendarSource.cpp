#include "calendar/qt/EdsCalendarSource.h"

#include <atomic>
#include <future>
#include <glib.h>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <QCoreApplication>
#include <QPointer>

#include "base/HelperModule.h"
#include "calendar/CalendarServiceReader.h"
#include "calendar/qt/MainThreadCompletion.h"

namespace daywyn {

namespace {

// Evolution's reader from daywyn-calendars.so; null, with the reason, when the module
// cannot be loaded.
std::unique_ptr<CalendarServiceReader> openEvolutionReader(const Calendar& calendar,
                                                           std::string& failure) {
    using Open = CalendarServiceReader* (*)(const Calendar&, bool, std::uint32_t);
    void* module = openHelperModule("daywyn-calendars.so", failure);
    auto open =
        reinterpret_cast<Open>(helperModuleFunction(module, "daywynOpenEvolutionCalendars"));
    if (open == nullptr) {
        if (module != nullptr) {
            failure = "daywyn-calendars.so has no reader for Evolution's calendars";
        }
        return nullptr;
    }
    // No time limit on a backend coming online: a local calendar is there at once, a
    // network one is waited for on the service thread, not on the main thread.
    return std::unique_ptr<CalendarServiceReader>(
        open(calendar, true, CalendarServiceReader::kWaitForever));
}

} // namespace

struct EdsCalendarSource::State {
    explicit State(Calendar zone)
        : calendar(std::move(zone)) {}

    Calendar calendar;
    std::mutex mutex;
    // Made on the service thread at its first read (the module is loaded then, never at
    // start-up), used and let go of there.
    std::unique_ptr<CalendarServiceReader> reader;
    // Why the module could not be loaded, once that was tried.
    std::optional<std::string> loadFailure;
    // The reader, for cancel() from the main thread while a read holds the mutex.
    std::atomic<CalendarServiceReader*> cancellable{nullptr};
    std::atomic<bool> cancelled{false};
    // Every call into the calendar service runs on one thread of our own, whose GLib
    // context is its default: the registry's and views' signals are dispatched there,
    // never on a Qt worker whose context nobody runs. Started by the first read.
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
            cancellable = nullptr;
            reader.reset();
        }
        g_main_context_pop_thread_default(context);
    }

    // On the service thread: the reader, loaded on first use.
    CalendarServiceReader* ensureReader() {
        if (!reader && !loadFailure) {
            std::string failure;
            reader = openEvolutionReader(calendar, failure);
            if (!reader) {
                loadFailure = "Daywyn could not load its calendar reader (" + failure + ").";
                return nullptr;
            }
            // Signals arrive on the service thread; the handler runs on the main thread.
            std::weak_ptr<State> weak = self;
            reader->setChangeHandler([weak] {
                QMetaObject::invokeMethod(
                    QCoreApplication::instance(),
                    [weak] {
                        if (auto alive = weak.lock(); alive && alive->onChange) {
                            alive->onChange();
                        }
                    },
                    Qt::QueuedConnection);
            });
            cancellable = reader.get();
            if (cancelled) {
                reader->cancel();
            }
        }
        return reader.get();
    }

    CalendarSnapshot read(const CalendarQuery& query) {
        const std::lock_guard lock(mutex);
        if (CalendarServiceReader* found = ensureReader()) {
            return found->read(query);
        }
        CalendarSnapshot unavailable;
        unavailable.errorMessage = loadFailure;
        return unavailable;
    }

    // Runs `work` on the service thread, starting it on first use.
    static void invoke(const std::shared_ptr<State>& state, std::function<void(State&)> work) {
        if (!state->thread.joinable()) {
            State* running = state.get();
            state->thread = std::thread([running] { running->run(); });
        }
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
}

EdsCalendarSource::~EdsCalendarSource() {
    if (!state_->thread.joinable()) {
        return;
    }
    // A read stuck on a dead service is cancelled rather than waited for forever.
    state_->cancelled = true;
    if (CalendarServiceReader* reader = state_->cancellable.load()) {
        reader->cancel();
    }
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
