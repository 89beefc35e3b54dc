#pragma once

#include <utility>

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>

#include "calendar/CalendarSource.h"

namespace daywyn {

// Hands a snapshot read on a worker thread to `done` on the main thread, unless the
// source that asked for it is gone by then.
template <typename Source>
void completeOnMainThread(QPointer<Source> source, CalendarSource::Completion done,
                          CalendarSnapshot snapshot) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [source = std::move(source), done = std::move(done),
         snapshot = std::move(snapshot)]() mutable {
            if (source) {
                done(std::move(snapshot));
            }
        },
        Qt::QueuedConnection);
}

} // namespace daywyn
