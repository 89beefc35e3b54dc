#pragma once

#include <QString>

namespace daywyn {

class OnboardingWindow;
class QuickCaptureController;
class SettingsWindow;

// Saves the Quick Add panel (with a typed line and its preview), every settings page
// and the welcome window as PNG files into `folder`, one after another once each has
// drawn, then quits the app: exit status 0 when every file was written.
void captureSettingsScreenshots(QuickCaptureController& quickCapture, SettingsWindow& settings,
                                OnboardingWindow& onboarding, const QString& folder);

// Saves the Calendars page's task sync set-up as a person goes through it, into
// `folder`: the empty form ("setup-empty"), asking `silentServer` (which never answers)
// for the task lists ("setup-finding"), `server` refusing a wrong password
// ("setup-failed"), the lists it has ("setup-choosing") and the section once Start
// syncing has set the account up and its first pass ended ("setup-started"); then
// quits the app. With no servers, saves the page scrolled to the section and to its
// end ("task-sync", "task-sync-end") instead.
void captureTaskSyncScreenshots(SettingsWindow& settings, const QString& folder,
                                const QString& server, const QString& silentServer);

} // namespace daywyn
