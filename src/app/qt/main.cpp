// daywyn-app: the desktop app. `daywyn` with no verb hands over to it, and the D-Bus
// service file starts it when a call reaches org.daywyn.Daywyn while it is not running.
#include "app/qt/DesktopApp.h"

int main(int argc, char** argv) {
    return daywyn::runDesktopApp(argc, argv);
}
