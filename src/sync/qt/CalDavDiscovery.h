#pragma once

#include <string>
#include <vector>

#include <QUrl>

#include "base/Result.h"
#include "sync/qt/CalDavSession.h"

namespace daywyn::sync {

// A calendar collection on the server that holds tasks.
struct TaskListInfo {
    std::string url;
    std::string name;
    bool operator==(const TaskListInfo&) const = default;
};

// What discovery found for an account: its calendar home and the task lists in it.
struct CalDavAccountInfo {
    std::string homeUrl;
    std::vector<TaskListInfo> lists;
};

// Finds an account's task lists from a server address (RFC 4791 and 6764): the address
// itself, then /.well-known/caldav, then the server's root, asked for the current
// user's principal and its calendar home; the home's collections that take VTODOs
// are the task lists. An address that is itself a task list is the one list found.
class CalDavDiscovery {
public:
    CalDavDiscovery(const QUrl& server, DavCredentials credentials,
                    int timeoutMilliseconds = 30'000);

    Result<CalDavAccountInfo> discover();
    // Ends discovery early once `stop` is set.
    void stopWhen(StopFlag stop) { session_.stopWhen(std::move(stop)); }
    // Makes a task list (MKCALENDAR, VTODO only) named `name` in the calendar home.
    Result<TaskListInfo> createTaskList(const std::string& homeUrl, const std::string& name);

private:
    // The home found from one starting address; empty when that address says nothing.
    Result<CalDavAccountInfo> tryStart(const QUrl& start, bool& answered);
    Result<std::vector<TaskListInfo>> listsIn(const QUrl& home);

    QUrl server_;
    CalDavSession session_;
};

} // namespace daywyn::sync
