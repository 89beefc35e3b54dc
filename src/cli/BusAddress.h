#pragma once

namespace daywyn {

// Where the running desktop app answers on the session bus. The interface itself is
// described in src/app/qt/org.daywyn.Daywyn.xml, from which the app's adaptor and the
// proxy are made; the D-Bus service file names the same bus name.
inline constexpr const char* kBusName = "org.daywyn.Daywyn";
inline constexpr const char* kBusObjectPath = "/org/daywyn/Daywyn";
inline constexpr const char* kBusInterface = "org.daywyn.Daywyn";

} // namespace daywyn
