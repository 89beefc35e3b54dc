#pragma once

namespace daywyn::test {

// True inside scripts/hermetic-test.sh (which ctest uses for every test program);
// otherwise says why on stderr and returns false, so a test can never touch the
// user's real data folder.
bool runningHermetically();

} // namespace daywyn::test
