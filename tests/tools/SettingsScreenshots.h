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

} // namespace daywyn
