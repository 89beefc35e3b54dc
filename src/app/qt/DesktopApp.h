#pragma once

namespace daywyn {

// Starts the desktop app: the edge drawer, quick capture and reminders. Returns the
// process's exit status.
int runDesktopApp(int argc, char** argv);

} // namespace daywyn
