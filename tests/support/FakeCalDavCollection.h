#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sync/CalDavCollection.h"

namespace daywyn::test {

// A CalDAV task list in memory, as a server keeps it: etags, a change log behind sync
// tokens, conditional writes. Faults on demand: a call that fails with a sentence, writes
// refused with 412, no sync tokens, etags left out of write replies. Counts requests.
class FakeCalDavCollection : public sync::CalDavCollection {
public:
    enum class Call { changesSince, fetch, put, remove };

    struct Stored {
        std::string ics;
        std::string etag;
    };

    // ---- the server's side, as another client or an administrator changes it ----
    // Writes a resource unconditionally (a new etag, a change in the log).
    void store(const std::string& href, const std::string& ics);
    void erase(const std::string& href);
    // Everything gone, and old sync tokens refused (a recreated task list).
    void wipe();
    const std::map<std::string, Stored>& resources() const { return resources_; }

    // ---- faults ----
    // Decides each call: a sentence fails it, nothing lets it through.
    std::function<std::optional<std::string>(Call)> fault;
    // The next `count` writes (PUT or DELETE) are refused with 412, whatever they ask;
    // `changeFirst` also rewrites the resource first (another client got there first).
    void refuseWrites(int count, bool changeFirst = false);
    bool keepsSyncTokens = true;
    bool sendsEtags = true;

    // ---- counting ----
    int requests() const { return requests_; }
    int requests(Call call) const;
    void resetCounts();

    Result<sync::ChangeListing> changesSince(const std::string& syncToken) override;
    Result<std::vector<sync::RemoteResource>> fetch(const std::vector<std::string>& hrefs) override;
    Result<sync::WriteReply> put(const std::string& href, const std::string& ics,
                                 const std::optional<std::string>& ifMatch) override;
    Result<sync::WriteOutcome> remove(const std::string& href, const std::string& etag) override;
    std::string hrefFor(const std::string& uid) const override;

private:
    std::optional<std::string> enter(Call call);
    bool refuseThisWrite(const std::string& href);
    std::string nextEtag();

    std::map<std::string, Stored> resources_;
    // Revision of each resource's last change (a removal too).
    std::map<std::string, long> changedAt_;
    long revision_ = 0;
    // Tokens older than this are refused.
    long oldestToken_ = 0;
    long etagCounter_ = 0;
    int refuseWrites_ = 0;
    bool changeBeforeRefusing_ = false;
    int requests_ = 0;
    std::map<Call, int> byCall_;
};

} // namespace daywyn::test
