#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "Manual.h"
#include "Options.h"

namespace VelmarManual {

namespace {

// What the function of every program begins and ends with; between them stand `case`s that set words.
constexpr const char* kBegin = R"(# Completion of @NAME@ for bash.

@FUNCTION@()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= words= i
    COMPREPLY=()
    # bash takes "--option=value" apart
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = && $COMP_CWORD -gt 2 ]]; then
        prev=${COMP_WORDS[COMP_CWORD-2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${COMP_WORDS[i]} in
            @COMMANDS@)
                command=${COMP_WORDS[i]}
                break
                ;;
        esac
    done
)";

constexpr const char* kEnd = R"(    if [[ $cur == -* || -z $command ]]; then
        COMPREPLY=($(compgen -W "$words" -- "$cur"))
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        compopt -o filenames 2>/dev/null
    fi
}
complete -F @FUNCTION@ @NAME@
)";

std::string Replaced(std::string text, const std::string& hole, const std::string& by) {
  for (std::size_t at = text.find(hole); at != std::string::npos; at = text.find(hole, at + by.size())) {
    text.replace(at, hole.size(), by);
  }
  return text;
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  return names;
}

std::vector<std::string> NamesOf(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* command : ShownCommands(program)) names.push_back(command->get_name());
  return names;
}

// The values that CLI::IsMember admits: its words stand in the name of the type, "NAME:{a,b}".
std::string MembersOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t begin = type.find('{');
  const std::size_t end = type.find('}');
  return begin == std::string::npos || end == std::string::npos ? "" : Replaced(type.substr(begin + 1, end - begin - 1), ",", " ");
}

bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

// The line that proposes values of the option. By the name of the value: a file, a folder, or what cannot be known.
std::string Proposal(const CLI::Option& option, const Facts& facts) {
  const std::string type = option.get_type_name();
  std::string words = MembersOf(option);
  for (const std::string& name : NamesOf(option)) {
    const auto known = facts.values.find(name);
    if (known != facts.values.end()) words = Joined(known->second, " ");
  }
  if (!words.empty()) return "COMPREPLY=($(compgen -W \"" + words + "\" -- \"$cur\"))";
  for (const char* folder : {"FOLDER", "DIR"}) {
    if (Contains(type, folder)) return "mapfile -t COMPREPLY < <(compgen -d -- \"$cur\"); compopt -o filenames 2>/dev/null";
  }
  for (const char* file : {"FILE", "OUT"}) {
    if (Contains(type, file)) return "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\"); compopt -o filenames 2>/dev/null";
  }
  return ":";
}

// A branch for the command, "" for none: its options, and what to propose behind those that take a value.
void AddBranch(std::ostream& script, const CLI::App& command, const std::string& name, const Facts& facts) {
  std::vector<std::string> words = name.empty() ? NamesOf(command) : std::vector<std::string>();
  std::ostringstream values;
  for (const CLI::Option* option : ShownOptions(command)) {
    const std::vector<std::string> names = NamesOf(*option);
    words.insert(words.end(), names.begin(), names.end());
    if (!TakesValue(*option)) continue;
    values << "                " << Joined(names, " | ") << ") " << Proposal(*option, facts) << "; return ;;\n";
  }
  script << "        " << (name.empty() ? "''" : name) << ")\n"
         << "            words=\"" << Joined(words, " ") << "\"\n";
  if (!values.str().empty()) script << "            case $prev in\n" << values.str() << "            esac\n";
  script << "            ;;\n";
}

}  // namespace

std::string BashCompletion(const CLI::App& program, const Facts& facts) {
  const std::string& name = program.get_name();
  const std::string function = '_' + Replaced(name, "-", "_");
  const auto fill = [&](const char* text) {
    return Replaced(Replaced(Replaced(text, "@NAME@", name), "@FUNCTION@", function), "@COMMANDS@",
                    Joined(NamesOf(program), " | "));
  };
  std::ostringstream script;
  script << fill(kBegin) << "    case $command in\n";
  AddBranch(script, program, "", facts);
  for (const CLI::App* command : ShownCommands(program)) AddBranch(script, *command, command->get_name(), facts);
  script << "    esac\n" << fill(kEnd);
  return script.str();
}

void AddOptions(CLI::App& program, const Facts& facts) {
  const auto print = [](std::string text) {
    if (!text.empty() && text.back() == '\n') text.pop_back();  // CLI::App::exit adds it
    throw CLI::CallForVersion(text, 0);
  };
  program
      .add_option_function<std::string>(
          "--print-man-page",
          [&program, facts, print](const std::string& date) { print(ManPage(program, facts, date)); })
      ->group("");
  program
      .add_flag_callback("--print-bash-completion",
                         [&program, facts, print] { print(BashCompletion(program, facts)); })
      ->group("");
}

}  // namespace VelmarManual
