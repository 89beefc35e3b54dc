#include "support/FakeCalDavCollection.h"

namespace daywyn::test {

using namespace sync;

void FakeCalDavCollection::store(const std::string& href, const std::string& ics) {
    resources_[href] = {ics, nextEtag()};
    changedAt_[href] = ++revision_;
}

void FakeCalDavCollection::erase(const std::string& href) {
    if (resources_.erase(href) > 0) {
        changedAt_[href] = ++revision_;
    }
}

void FakeCalDavCollection::wipe() {
    resources_.clear();
    changedAt_.clear();
    oldestToken_ = ++revision_;
}

void FakeCalDavCollection::refuseWrites(int count, bool changeFirst) {
    refuseWrites_ = count;
    changeBeforeRefusing_ = changeFirst;
}

int FakeCalDavCollection::requests(Call call) const {
    const auto found = byCall_.find(call);
    return found == byCall_.end() ? 0 : found->second;
}

void FakeCalDavCollection::resetCounts() {
    requests_ = 0;
    byCall_.clear();
}

std::optional<std::string> FakeCalDavCollection::enter(Call call) {
    ++requests_;
    ++byCall_[call];
    return fault ? fault(call) : std::nullopt;
}

std::string FakeCalDavCollection::nextEtag() {
    return "\"e" + std::to_string(++etagCounter_) + "\"";
}

bool FakeCalDavCollection::refuseThisWrite(const std::string& href) {
    if (refuseWrites_ <= 0) {
        return false;
    }
    --refuseWrites_;
    if (changeBeforeRefusing_) {
        if (const auto found = resources_.find(href); found != resources_.end()) {
            store(href, found->second.ics);
        }
    }
    return true;
}

Result<ChangeListing> FakeCalDavCollection::changesSince(const std::string& syncToken) {
    if (auto failure = enter(Call::changesSince)) {
        return Error{*failure};
    }
    ChangeListing listing;
    long since = -1;
    if (keepsSyncTokens && syncToken.rfind("rev-", 0) == 0) {
        since = std::stol(syncToken.substr(4));
        if (since < oldestToken_) {
            since = -1;
        }
    }
    listing.complete = since < 0;
    for (const auto& [href, revision] : changedAt_) {
        if (revision <= since) {
            continue;
        }
        if (const auto found = resources_.find(href); found != resources_.end()) {
            listing.changed.push_back({href, found->second.etag});
        } else if (!listing.complete) {
            listing.removed.push_back(href);
        }
    }
    if (keepsSyncTokens) {
        listing.syncToken = "rev-" + std::to_string(revision_);
    }
    return listing;
}

Result<std::vector<RemoteResource>>
FakeCalDavCollection::fetch(const std::vector<std::string>& hrefs) {
    if (auto failure = enter(Call::fetch)) {
        return Error{*failure};
    }
    std::vector<RemoteResource> found;
    for (const auto& href : hrefs) {
        if (const auto stored = resources_.find(href); stored != resources_.end()) {
            found.push_back({href, stored->second.etag, stored->second.ics});
        }
    }
    return found;
}

Result<WriteReply> FakeCalDavCollection::put(const std::string& href, const std::string& ics,
                                             const std::optional<std::string>& ifMatch) {
    if (auto failure = enter(Call::put)) {
        return Error{*failure};
    }
    const auto existing = resources_.find(href);
    const bool matches = ifMatch ? existing != resources_.end() && existing->second.etag == *ifMatch
                                 : existing == resources_.end();
    if (!matches || refuseThisWrite(href)) {
        return WriteReply{WriteOutcome::preconditionFailed, {}};
    }
    store(href, ics);
    return WriteReply{WriteOutcome::written, sendsEtags ? resources_[href].etag : std::string()};
}

Result<WriteOutcome> FakeCalDavCollection::remove(const std::string& href,
                                                  const std::string& etag) {
    if (auto failure = enter(Call::remove)) {
        return Error{*failure};
    }
    const auto existing = resources_.find(href);
    if (existing == resources_.end()) {
        return WriteOutcome::notFound;
    }
    if (existing->second.etag != etag || refuseThisWrite(href)) {
        return WriteOutcome::preconditionFailed;
    }
    erase(href);
    return WriteOutcome::written;
}

std::string FakeCalDavCollection::hrefFor(const std::string& uid) const {
    return "/calendars/user/tasks/" + uid + ".ics";
}

} // namespace daywyn::test
