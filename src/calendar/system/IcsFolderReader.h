#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/Calendar.h"
#include "calendar/CalendarSource.h"

namespace daywyn {

class IcsCalendarFile;

// Calendars kept as iCalendar files in one folder ($XDG_DATA_HOME/Daywyn/calendars/):
// each .ics file is one calendar, and each sub-folder of .ics files (one event per file,
// as vdirsyncer and khal write them) is one calendar named by its "displayname" file and
// coloured by its "color" file. A reader keeps what it parsed: a file is parsed again
// only when its size or modification time changed. Not thread-safe: one reader per
// thread, or a lock around it.
class IcsFolderReader {
public:
    IcsFolderReader(std::filesystem::path folder, Calendar calendar);
    ~IcsFolderReader();
    IcsFolderReader(const IcsFolderReader&) = delete;
    IcsFolderReader& operator=(const IcsFolderReader&) = delete;

    // $XDG_DATA_HOME/Daywyn/calendars (~/.local/share/Daywyn/calendars by default).
    static std::filesystem::path defaultFolder();
    // The source title the folder's calendars are listed under.
    static constexpr const char* kSourceTitle = "Calendar files";

    const std::filesystem::path& folder() const { return folder_; }

    // The folder's calendars and the day's occurrences of those in the query. No folder
    // gives the unavailable status; files that are not calendars are named in the
    // error sentence and the rest are read.
    CalendarSnapshot read(const CalendarQuery& query);

private:
    struct FileStamp {
        std::string path;
        std::uintmax_t size = 0;
        std::filesystem::file_time_type modified;
        bool operator==(const FileStamp&) const = default;
    };
    struct Entry {
        std::vector<FileStamp> stamps;
        std::unique_ptr<IcsCalendarFile> file;
        std::vector<std::string> unreadable;
    };

    std::filesystem::path folder_;
    Calendar calendar_;
    // By calendar id; kept between reads so unchanged files are not parsed again.
    std::map<std::string, Entry> entries_;
};

} // namespace daywyn
