#include "cli/CommandLine.h"

#include <algorithm>
#include <cctype>

#include <unicode/unistr.h>

#include "cli/VerbHelp.h"

namespace daywyn {

namespace {

CommandOutput usageError(std::string_view verb, std::string_view sentence) {
    return CommandOutput{2,
                         {},
                         "daywyn " + std::string(verb) + ": " + std::string(sentence) +
                             " Run 'daywyn " + std::string(verb) + " --help' for usage.\n"};
}

// "-x" and "--name" are options; "-5 push-ups", "- buy milk" and "-" are text.
bool looksLikeOption(const std::string& a) {
    return a.size() > 1 && a[0] == '-' &&
           (a[1] == '-' || std::isalpha(static_cast<unsigned char>(a[1])));
}

const VerbOption* optionOf(const Verb& verb, std::string_view name) {
    for (const auto& option : verb.options) {
        if (option.name == name) {
            return &option;
        }
    }
    return nullptr;
}

bool asksForHelp(const std::vector<std::string>& args) {
    for (std::size_t i = 1; i < args.size() && args[i] != "--"; ++i) {
        if (args[i] == "--help" || args[i] == "-h") {
            return true;
        }
    }
    return false;
}

} // namespace

ParsedCommand parseCommand(const std::vector<std::string>& args) {
    ParsedCommand parsed;
    if (args.empty() || args[0] == "help" || args[0] == "--help" || args[0] == "-h") {
        const Verb* about = args.size() >= 2 ? findVerb(args[1]) : nullptr;
        parsed.answer = CommandOutput{0, about ? verbHelpText(*about) : usageText(), {}};
        return parsed;
    }
    const Verb* verb = findVerb(args[0]);
    if (!verb) {
        parsed.answer = CommandOutput{2,
                                      {},
                                      "daywyn: unknown verb \"" + args[0] +
                                          "\". Run 'daywyn --help' for the list of verbs.\n"};
        return parsed;
    }
    if (asksForHelp(args)) {
        parsed.answer = CommandOutput{0, verbHelpText(*verb), {}};
        return parsed;
    }
    VerbLine& line = parsed.line;
    line.verb = verb;
    bool onlyWords = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!onlyWords && a == "--") {
            onlyWords = true;
            continue;
        }
        if (onlyWords || !looksLikeOption(a)) {
            line.words.push_back(a);
            continue;
        }
        const VerbOption* option = optionOf(*verb, a);
        if (!option) {
            parsed.answer = usageError(verb->name, "Unknown option " + a + ".");
            return parsed;
        }
        if (option->value.empty()) {
            line.flags.push_back(a);
        } else if (i + 1 < args.size()) {
            line.values.emplace_back(a, args[++i]);
        } else {
            parsed.answer =
                usageError(verb->name, "Give " + std::string(option->value) + " after " + a + ".");
            return parsed;
        }
    }
    const std::size_t count = line.words.size();
    switch (verb->words) {
    case VerbWords::none:
        if (count > 0) {
            parsed.answer = usageError(verb->name, "It takes no words.");
        }
        break;
    case VerbWords::taskId:
    case VerbWords::optionalTaskId:
        if (count > 1) {
            parsed.answer = usageError(verb->name, "It takes one task id.");
        } else if (count == 0 && verb->words == VerbWords::taskId) {
            parsed.answer =
                usageError(verb->name, "Give the start of a task id (see 'daywyn today').");
        }
        break;
    case VerbWords::text:
    case VerbWords::path:
        break;
    }
    return parsed;
}

std::optional<CommandOutput> prepareCommand(VerbLine& line, Instant now, const Calendar& calendar) {
    if (line.verb->check) {
        return line.verb->check(line, now, calendar);
    }
    return std::nullopt;
}

VerbAccess lineAccess(const VerbLine& line) {
    const Verb& verb = *line.verb;
    if (verb.access == VerbAccess::writing && !verb.readOnlyWith.empty() &&
        line.has(verb.readOnlyWith)) {
        return VerbAccess::reading;
    }
    if (verb.access == VerbAccess::writing && verb.readOnlyWithoutWords && line.words.empty()) {
        return VerbAccess::reading;
    }
    if (verb.access == VerbAccess::writing && !verb.readOnlyWord.empty() && !line.words.empty() &&
        line.words[0] == verb.readOnlyWord) {
        return VerbAccess::reading;
    }
    return verb.access;
}

VerbAccess verbAccess(const std::vector<std::string>& args) {
    const ParsedCommand parsed = parseCommand(args);
    if (parsed.answer || !parsed.line.verb) {
        return VerbAccess::reading;
    }
    return lineAccess(parsed.line);
}

std::optional<CommandOutput> checkWithoutStore(const std::vector<std::string>& args, Instant now,
                                               const Calendar& calendar) {
    ParsedCommand parsed = parseCommand(args);
    if (parsed.answer) {
        return parsed.answer;
    }
    return prepareCommand(parsed.line, now, calendar);
}

CommandOutput runVerbLine(VerbLine& line, VerbContext& context) {
    return line.verb->run(line, context);
}

CommandOutput runCommand(TodayTaskStore& store, const std::vector<std::string>& args, Instant now,
                         const Calendar& calendar, AppWindows* windows, CalendarReader* calendars,
                         TaskSyncRunner* syncer) {
    ParsedCommand parsed = parseCommand(args);
    if (parsed.answer) {
        return *parsed.answer;
    }
    if (auto refused = prepareCommand(parsed.line, now, calendar)) {
        return *refused;
    }
    VerbContext context{&store, now, calendar, windows, nullptr, calendars, syncer};
    return runVerbLine(parsed.line, context);
}

// ---- VerbLine ----

bool VerbLine::has(std::string_view option) const {
    return std::find(flags.begin(), flags.end(), option) != flags.end() || value(option);
}

const std::string* VerbLine::value(std::string_view option) const {
    for (const auto& [name, text] : values) {
        if (name == option) {
            return &text;
        }
    }
    return nullptr;
}

std::string VerbLine::text() const {
    std::string joined;
    for (const auto& w : words) {
        if (!joined.empty()) {
            joined += ' ';
        }
        joined += w;
    }
    return joined;
}

std::string validUtf8(std::string_view text) {
    std::string out;
    icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())))
        .toUTF8String(out);
    return out;
}

const Verb* findVerb(std::string_view name) {
    for (const auto& verb : verbTable()) {
        if (verb.name == name) {
            return &verb;
        }
    }
    return nullptr;
}

} // namespace daywyn
