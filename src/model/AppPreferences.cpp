#include "model/AppPreferences.h"

namespace daywyn {

int rawValue(UnfinishedReminderCadence cadence) {
    return static_cast<int>(cadence);
}

std::optional<UnfinishedReminderCadence> cadenceFromRaw(long long minutes) {
    for (auto cadence : kAllCadences) {
        if (rawValue(cadence) == minutes) {
            return cadence;
        }
    }
    return std::nullopt;
}

std::string_view rawValue(EdgeAnchor anchor) {
    switch (anchor) {
    case EdgeAnchor::topLeft:
        return "topLeft";
    case EdgeAnchor::topCenter:
        return "topCenter";
    case EdgeAnchor::topRight:
        return "topRight";
    case EdgeAnchor::rightCenter:
        return "rightCenter";
    case EdgeAnchor::bottomRight:
        return "bottomRight";
    case EdgeAnchor::bottomCenter:
        return "bottomCenter";
    case EdgeAnchor::bottomLeft:
        return "bottomLeft";
    case EdgeAnchor::leftCenter:
        return "leftCenter";
    }
    return "topLeft";
}

std::optional<EdgeAnchor> edgeAnchorFromRaw(std::string_view raw) {
    for (auto anchor : kAllAnchors) {
        if (rawValue(anchor) == raw) {
            return anchor;
        }
    }
    return std::nullopt;
}

} // namespace daywyn
