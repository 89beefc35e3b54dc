#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace daywyn::sync {

// One calendar object resource on the server: a VTODO as iCalendar text.
struct RemoteResource {
    std::string href;
    std::string etag;
    std::string ics;
};

struct ResourceEtag {
    std::string href;
    std::string etag;
};

// What changed in the collection since a sync token (a sync-collection report), or
// every resource with its etag when the server has no such report or the token was
// refused.
struct ChangeListing {
    // Every resource of the collection is in `changed`: anything not listed is gone.
    bool complete = false;
    std::vector<ResourceEtag> changed;
    // Resources the server reported as removed since the token.
    std::vector<std::string> removed;
    // Empty when the server keeps no sync tokens.
    std::string syncToken;
};

// How a conditional write ended: written, refused because the resource changed (or
// exists) on the server meanwhile, or the resource was gone.
enum class WriteOutcome { written, preconditionFailed, notFound };

struct WriteReply {
    WriteOutcome outcome = WriteOutcome::written;
    // The new etag; empty when the server did not send one (fetch to learn it).
    std::string etag;
};

// The task list on the CalDAV server, as a sync pass sees it. Calls are synchronous:
// the app makes them from a worker thread. A failure is a sentence the user can read
// ("The sync server did not answer.", "The sync server refused the user name or
// password."); a refused precondition is not a failure but a WriteOutcome.
class CalDavCollection {
public:
    virtual ~CalDavCollection() = default;

    // Changes since `syncToken`; an empty token asks for everything.
    virtual Result<ChangeListing> changesSince(const std::string& syncToken) = 0;
    // The resources at these hrefs (calendar-multiget); missing ones are left out.
    virtual Result<std::vector<RemoteResource>> fetch(const std::vector<std::string>& hrefs) = 0;
    // Writes with If-Match: `ifMatch`, or with If-None-Match: * when it is empty.
    virtual Result<WriteReply> put(const std::string& href, const std::string& ics,
                                   const std::optional<std::string>& ifMatch) = 0;
    // Deletes with If-Match: `etag`.
    virtual Result<WriteOutcome> remove(const std::string& href, const std::string& etag) = 0;
    // Where a new resource with this UID goes.
    virtual std::string hrefFor(const std::string& uid) const = 0;
};

} // namespace daywyn::sync
