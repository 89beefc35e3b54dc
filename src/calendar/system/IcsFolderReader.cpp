#include "calendar/system/IcsFolderReader.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "calendar/system/IcsCalendarFile.h"
#include "persistence/XdgPaths.h"

namespace daywyn {

namespace fs = std::filesystem;

namespace {

std::string readWholeFile(const fs::path& path, bool& ok) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        ok = false;
        return {};
    }
    std::ostringstream text;
    text << in.rdbuf();
    ok = !in.bad();
    return std::move(text).str();
}

// The first 4 KiB of a small text file ("displayname", "color"), trimmed.
std::string readSmallTextFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return {};
    }
    std::string text(4096, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    const auto isSpace = [](unsigned char c) {
        return c == ' ' || (c >= '\t' && c <= '\r');
    };
    while (!text.empty() && isSpace(static_cast<unsigned char>(text.back()))) {
        text.pop_back();
    }
    const auto first = std::find_if_not(
        text.begin(), text.end(), [&](char c) { return isSpace(static_cast<unsigned char>(c)); });
    return std::string(first, text.end());
}

bool hasIcsSuffix(const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension == ".ics";
}

// The folder's entries sorted by name, errors read as an empty folder.
std::vector<fs::directory_entry> sortedEntries(const fs::path& folder) {
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        entries.push_back(*it);
    }
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return a.path().filename() < b.path().filename();
    });
    return entries;
}

} // namespace

IcsFolderReader::IcsFolderReader(fs::path folder, Calendar calendar)
    : folder_(std::move(folder))
    , calendar_(std::move(calendar)) {}

IcsFolderReader::~IcsFolderReader() = default;

fs::path IcsFolderReader::defaultFolder() {
    // With no home folder at all, a relative name (and no calendar files in it).
    const auto folder = daywynFolder(XdgBase::data);
    return fs::path(folder ? folder.value() : std::string("Daywyn")) / "calendars";
}

CalendarSnapshot IcsFolderReader::read(const CalendarQuery& query) {
    CalendarSnapshot snapshot;
    std::error_code error;
    if (!fs::is_directory(folder_, error)) {
        entries_.clear();
        snapshot.status = CalendarAccessStatus::unavailable;
        return snapshot;
    }
    snapshot.status = CalendarAccessStatus::fullAccess;
    std::map<std::string, Entry> kept;
    std::vector<std::string> unreadable;
    for (const fs::directory_entry& item : sortedEntries(folder_)) {
        const bool isFolder = item.is_directory(error);
        std::string title;
        std::string color;
        std::vector<FileStamp> stamps;
        const auto stampOf = [&error](const fs::directory_entry& file) {
            return FileStamp{file.path().string(), file.file_size(error),
                             file.last_write_time(error)};
        };
        if (isFolder) {
            for (const auto& event : sortedEntries(item.path())) {
                if (event.is_regular_file(error) && hasIcsSuffix(event.path())) {
                    stamps.push_back(stampOf(event));
                }
            }
            title = readSmallTextFile(item.path() / "displayname");
            color = readSmallTextFile(item.path() / "color");
        } else if (item.is_regular_file(error) && hasIcsSuffix(item.path())) {
            stamps.push_back(stampOf(item));
        } else {
            continue;
        }
        const std::string id = "ics:" + item.path().filename().string();
        auto found = entries_.find(id);
        Entry entry;
        if (found != entries_.end() && found->second.stamps == stamps) {
            entry = std::move(found->second);
        } else {
            entry.stamps = stamps;
            entry.file = std::make_unique<IcsCalendarFile>();
            for (const auto& stamp : stamps) {
                bool ok = true;
                const std::string text = readWholeFile(stamp.path, ok);
                if (!ok || !entry.file->addText(text)) {
                    entry.unreadable.push_back(fs::path(stamp.path).filename().string());
                }
            }
        }
        unreadable.insert(unreadable.end(), entry.unreadable.begin(), entry.unreadable.end());
        // A single file that is not a calendar at all is not listed as one.
        if (!isFolder && !entry.unreadable.empty()) {
            kept.emplace(id, std::move(entry));
            continue;
        }
        if (title.empty()) {
            title = entry.file->name();
        }
        if (title.empty()) {
            title = isFolder ? item.path().filename().string() : item.path().stem().string();
        }
        if (color.empty()) {
            color = entry.file->colorText();
        }
        snapshot.calendars.push_back(SourceCalendar{id, title, kSourceTitle, color});
        if (std::find(query.calendarIdentifiers.begin(), query.calendarIdentifiers.end(), id) !=
            query.calendarIdentifiers.end()) {
            auto events = entry.file->occurrences(query.day, calendar_, id);
            snapshot.events.insert(snapshot.events.end(), std::make_move_iterator(events.begin()),
                                   std::make_move_iterator(events.end()));
        }
        kept.emplace(id, std::move(entry));
    }
    entries_ = std::move(kept);
    if (!unreadable.empty()) {
        std::string names;
        for (const auto& name : unreadable) {
            names += (names.empty() ? "" : ", ") + name;
        }
        snapshot.errorMessage = "Daywyn could not read these calendar files: " + names + ".";
    }
    return snapshot;
}

} // namespace daywyn
