#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "calendar/GoogleHttp.h"

namespace daywyn::test {

// A Google that answers from a function. Requests wait until deliver() so a test can
// see which were in flight together; every request is recorded.
class FakeGoogleHttp : public GoogleHttp {
public:
    std::function<GoogleHttpResponse(const GoogleHttpRequest&)> answer;
    std::vector<GoogleHttpRequest> sent;

    void send(GoogleHttpRequest request, Completion done) override;
    std::size_t pending() const { return pending_.size(); }
    // Answers the requests waiting now (not the ones their answers cause).
    void deliver();
    // Answers until nothing waits.
    void deliverAll();

private:
    std::deque<std::pair<GoogleHttpRequest, Completion>> pending_;
};

} // namespace daywyn::test
