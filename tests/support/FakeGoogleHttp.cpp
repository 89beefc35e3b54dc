#include "support/FakeGoogleHttp.h"

namespace daywyn::test {

void FakeGoogleHttp::send(GoogleHttpRequest request, Completion done) {
    sent.push_back(request);
    pending_.emplace_back(std::move(request), std::move(done));
}

void FakeGoogleHttp::deliver() {
    auto waiting = std::move(pending_);
    pending_.clear();
    for (auto& [request, done] : waiting) {
        done(answer ? answer(request) : GoogleHttpResponse{});
    }
}

void FakeGoogleHttp::deliverAll() {
    while (!pending_.empty()) {
        deliver();
    }
}

} // namespace daywyn::test
