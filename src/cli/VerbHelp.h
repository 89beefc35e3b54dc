#pragma once

#include <string>
#include <string_view>

#include "cli/Verb.h"

namespace daywyn {

// `daywyn --help`: every verb of the table with its summary.
std::string usageText();

// `daywyn VERB --help`: the usage line, the description and the options.
std::string verbHelpText(const Verb& verb);

// The manual page daywyn(1) in roff, made from the same table.
std::string manPage();

// A completion script for "bash" or "zsh" offering the verbs, each verb's options and,
// for verbs that take one, the ids of the tasks `daywyn today` lists. Empty for a
// shell it does not know.
std::string completionScript(std::string_view shell);

} // namespace daywyn
