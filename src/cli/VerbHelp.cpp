#include "cli/VerbHelp.h"

#include <algorithm>

#include "base/Version.h"

namespace daywyn {

namespace {

// The verb and what its words are, as the verb list shows it ("done ID").
std::string listing(const Verb& verb) {
    std::string text(verb.name);
    switch (verb.words) {
    case VerbWords::none:
        break;
    case VerbWords::taskId:
        text += " ID";
        break;
    case VerbWords::optionalTaskId:
        text += " [ID]";
        break;
    case VerbWords::text:
        text += " TEXT...";
        break;
    case VerbWords::path:
        text += " PATH";
        break;
    }
    return text;
}

std::string padded(std::string text, std::size_t width) {
    if (text.size() < width) {
        text.append(width - text.size(), ' ');
    } else {
        text += ' ';
    }
    return text;
}

std::string optionName(const VerbOption& option) {
    std::string name(option.name);
    if (!option.value.empty()) {
        name += " " + std::string(option.value);
    }
    return name;
}

// Escapes text for roff: backslashes, and a leading dot or quote that would start a
// request.
std::string roff(std::string_view text) {
    std::string out;
    bool lineStart = true;
    for (char c : text) {
        if (lineStart && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
        lineStart = c == '\n';
    }
    return out;
}

std::string spaced(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c == '\n') {
            c = ' ';
        }
    }
    return out;
}

// The words a shell completes after a verb: its options, and "ids" or "files" when it
// takes a task id or a path.
std::string verbOptionWords(const Verb& verb) {
    std::string words;
    for (const auto& option : verb.options) {
        words += (words.empty() ? "" : " ") + std::string(option.name);
    }
    return words + (words.empty() ? "" : " ") + "--help";
}

bool takesTaskId(const Verb& verb) {
    return verb.words == VerbWords::taskId || verb.words == VerbWords::optionalTaskId;
}

std::string bashCompletion() {
    std::string verbs;
    std::string cases;
    for (const auto& verb : verbTable()) {
        verbs += (verbs.empty() ? "" : " ") + std::string(verb.name);
        cases += "        " + std::string(verb.name) + ") options=\"" + verbOptionWords(verb) +
                 "\"; words=" +
                 (takesTaskId(verb)               ? "ids"
                  : verb.words == VerbWords::path ? "files"
                                                  : "none") +
                 " ;;\n";
    }
    return "# bash completion for daywyn, made by 'daywyn --completion bash'.\n"
           "_daywyn_task_ids() {\n"
           "    # A task's id is followed by isComplete and a key other than the title (a\n"
           "    # checklist item's is followed by its title, a session's by its start).\n"
           "    command daywyn today --json 2>/dev/null |\n"
           "        grep -o '\"id\":\"[0-9A-Fa-f-]*\",\"isComplete\":[a-z]*,\"[a-su-z]' |\n"
           "        cut -d'\"' -f4 | cut -c1-8\n"
           "}\n"
           "_daywyn() {\n"
           "    local cur=${COMP_WORDS[COMP_CWORD]}\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        COMPREPLY=($(compgen -W \"" +
           verbs +
           " --help --version\" -- \"$cur\"))\n"
           "        return\n"
           "    fi\n"
           "    local options=\"\" words=none\n"
           "    case ${COMP_WORDS[1]} in\n" +
           cases +
           "        *) return ;;\n"
           "    esac\n"
           "    if [[ $cur == -* ]]; then\n"
           "        COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n"
           "    elif [ \"$words\" = ids ]; then\n"
           "        COMPREPLY=($(compgen -W \"$(_daywyn_task_ids)\" -- \"${cur^^}\"))\n"
           "    elif [ \"$words\" = files ]; then\n"
           "        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
           "    fi\n"
           "}\n"
           "complete -F _daywyn daywyn\n";
}

std::string zshCompletion() {
    std::string verbs;
    std::string cases;
    for (const auto& verb : verbTable()) {
        std::string summary = spaced(verb.summary);
        for (std::size_t at = 0; (at = summary.find('\'', at)) != std::string::npos; at += 4) {
            summary.replace(at, 1, "'\\''");
        }
        verbs += "        '" + std::string(verb.name) + ":" + summary + "'\n";
        cases += "        " + std::string(verb.name) + ")\n            _arguments";
        for (const auto& option : verb.options) {
            cases += " '" + std::string(option.name) + "[" + spaced(option.help) + "]" +
                     (option.value.empty() ? "" : ":" + std::string(option.value) + ":") + "'";
        }
        cases += " '--help[show the verb'\\''s help]'";
        if (takesTaskId(verb)) {
            cases += " '1:task id:_daywyn_task_ids'";
        } else if (verb.words == VerbWords::path) {
            cases += " '1:file:_files'";
        } else if (verb.words == VerbWords::text) {
            cases += " '*:text:'";
        }
        cases += " ;;\n";
    }
    return "#compdef daywyn\n"
           "# zsh completion for daywyn, made by 'daywyn --completion zsh'.\n"
           "_daywyn_task_ids() {\n"
           "    local -a ids\n"
           "    ids=(${(f)\"$(command daywyn today --json 2>/dev/null |\n"
           "        grep -o '\"id\":\"[0-9A-Fa-f-]*\",\"isComplete\":[a-z]*,\"[a-su-z]' |\n"
           "        cut -d'\"' -f4 | cut -c1-8)\"})\n"
           "    compadd -a ids\n"
           "}\n"
           "_daywyn() {\n"
           "    local -a verbs\n"
           "    verbs=(\n" +
           verbs +
           "    )\n"
           "    if (( CURRENT == 2 )); then\n"
           "        _describe -t verbs 'daywyn verb' verbs\n"
           "        return\n"
           "    fi\n"
           "    shift words\n"
           "    (( CURRENT-- ))\n"
           "    case ${words[1]} in\n" +
           cases +
           "    esac\n"
           "}\n"
           "_daywyn \"$@\"\n";
}

} // namespace

std::string usageText() {
    std::string text = "Usage: daywyn [VERB] [ARGUMENTS]\n"
                       "\n"
                       "With no verb, starts Daywyn (or shows its drawer when it is already "
                       "running).\n"
                       "\n"
                       "Verbs:\n";
    for (const auto& verb : verbTable()) {
        std::string_view summary = verb.summary;
        std::string left = padded("  " + listing(verb), 23);
        while (true) {
            const auto end = summary.find('\n');
            text += left + std::string(summary.substr(0, end)) + "\n";
            if (end == std::string_view::npos) {
                break;
            }
            summary.remove_prefix(end + 1);
            left = std::string(23, ' ');
        }
    }
    return text + "\nRun 'daywyn VERB --help' for a verb's options. 'daywyn --version' prints "
                  "the version.\n";
}

std::string verbHelpText(const Verb& verb) {
    std::string text = "Usage: daywyn " + std::string(verb.name);
    if (!verb.synopsis.empty()) {
        text += " " + std::string(verb.synopsis);
    }
    text += "\n\n" + std::string(verb.description) + "\n";
    if (!verb.options.empty()) {
        text += "\n";
        // The helps line up after the longest option, and never closer than a space.
        std::size_t width = 14;
        for (const auto& option : verb.options) {
            width = std::max(width, optionName(option).size() + 3);
        }
        for (const auto& option : verb.options) {
            text += padded("  " + optionName(option), width) + std::string(option.help) + "\n";
        }
    }
    return text;
}

std::string manPage() {
    std::string page = ".TH DAYWYN 1 \"\" \"Daywyn " + std::string(appVersion()) +
                       "\" \"User Commands\"\n"
                       ".SH NAME\n"
                       "daywyn \\- a local-first day planner at the edge of the screen\n"
                       ".SH SYNOPSIS\n"
                       ".B daywyn\n"
                       ".br\n"
                       ".B daywyn\n"
                       ".I VERB\n"
                       "[\\fIARGUMENTS\\fR]\n"
                       ".SH DESCRIPTION\n"
                       "With no verb, \\fBdaywyn\\fR starts the desktop app, or shows its drawer "
                       "when it is already running.\n"
                       "With a verb it works on the same data from the command line. While the "
                       "desktop app runs, verbs that change data are carried out by it over "
                       "D\\-Bus, so it stays the only writer of the state file.\n"
                       ".SH VERBS\n";
    for (const auto& verb : verbTable()) {
        page += ".TP\n\\fB" + roff(verb.name) + "\\fR";
        if (!verb.synopsis.empty()) {
            page += " " + roff(verb.synopsis);
        }
        page += "\n" + roff(spaced(verb.description)) + "\n";
        for (const auto& option : verb.options) {
            page +=
                ".RS\n.TP\n.B " + roff(optionName(option)) + "\n" + roff(option.help) + "\n.RE\n";
        }
    }
    page += ".SH OPTIONS\n"
            ".TP\n.B \\-\\-help\nlist the verbs; after a verb, explain it\n"
            ".TP\n.B \\-\\-version\nprint the version\n"
            ".SH EXIT STATUS\n"
            "0 on success, 1 when the verb failed (the sentence on standard error says why), "
            "2 for a usage error.\n"
            ".SH ENVIRONMENT\n"
            ".TP\n.B XDG_DATA_HOME\nthe data lives in \\fI$XDG_DATA_HOME/Daywyn/daywyn.json\\fR "
            "(default \\fI~/.local/share\\fR)\n"
            ".SH FILES\n"
            ".TP\n.I ~/.local/share/Daywyn/daywyn.json\nall tasks, preferences and reports\n"
            ".TP\n.I ~/.config/Daywyn/Daywyn.conf\nthe desktop app's settings\n";
    return page;
}

std::string completionScript(std::string_view shell) {
    if (shell == "bash") {
        return bashCompletion();
    }
    if (shell == "zsh") {
        return zshCompletion();
    }
    return {};
}

} // namespace daywyn
