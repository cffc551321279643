#include <algorithm>
#include <cctype>
#include <cstddef>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Manual.h"
#include "Options.h"

namespace VelmarManual {

namespace {

// How often an option stands among those of the commands, by its names and its description.
using Shared = std::map<std::string, int>;

// The text in roff, where a line that begins with a period or an apostrophe is a request.
std::string Escaped(const std::string& text) {
  std::string roff;
  for (const char c : text) {
    const bool atLineStart = roff.empty() || roff.back() == '\n';
    if (atLineStart && (c == '.' || c == '\'')) roff += "\\&";
    switch (c) {
      case '\\': roff += "\\e"; break;
      case '-': roff += "\\-"; break;
      case '\'': roff += "\\(aq"; break;
      case '^': roff += "\\(ha"; break;
      case '~': roff += "\\(ti"; break;
      case '`': roff += "\\(ga"; break;
      default: roff += c;
    }
  }
  return roff;
}

std::string Capitals(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// A sentence of its own: with a stop.
std::string Sentence(std::string text) {
  if (!text.empty() && text.back() != '.') text += '.';
  return Escaped(text) + '\n';
}

struct Footer {
  std::vector<std::string> examples;
  std::vector<std::string> rest;
};

// A paragraph of the example for each line of an "Example: "; the others as they are.
Footer FooterOf(const CLI::App& command) {
  static const std::string kExample = "Example: ";
  Footer footer;
  std::istringstream text(command.get_footer());
  std::string paragraph;
  bool isNew = true;
  for (std::string line; std::getline(text, line);) {
    if (line.empty()) {
      isNew = true;
    } else if (line.compare(0, kExample.size(), kExample) == 0) {
      footer.examples.push_back(line.substr(kExample.size()));
    } else if (isNew) {
      footer.rest.push_back(line);
      isNew = false;
    } else {
      footer.rest.back() += '\n' + line;
    }
  }
  return footer;
}

// "FILE...", "[TYPE]"
std::string Usage(const CLI::Option& positional) {
  std::string usage = positional.get_name(true, false);
  if (positional.get_expected_max() > 1) usage += "...";
  return positional.get_required() ? usage : '[' + usage + ']';
}

// "N" of "N:NONNEGATIVE", where a check has added what it admits; words to choose from stay.
std::string ValueName(const CLI::Option& option) {
  const std::string name = option.get_type_name();
  return name.find('{') == std::string::npos ? name.substr(0, name.find(':')) : name;
}

// What stands behind the name of a command: the options that have to be there by name, the others as "OPTIONS".
std::string Arguments(const CLI::App& command) {
  std::string text;
  for (const CLI::Option* positional : Positionals(command)) text += "\\fI" + Escaped(Usage(*positional)) + "\\fR ";
  for (const CLI::Option* option : ShownOptions(command)) {
    if (!option->get_required()) continue;
    const std::string name = option->get_snames().empty() ? "--" + option->get_lnames()[0] : '-' + option->get_snames()[0];
    text += "\\fB" + Escaped(name) + "\\fR \\fI" + Escaped(ValueName(*option)) + "\\fR ";
  }
  return text + "[\\fIOPTIONS\\fR]";
}

std::string Joined(const std::string& mark, const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + ("\\fB" + Escaped(mark + name) + "\\fR");
  return text;
}

std::string Names(const CLI::Option& option) {
  const std::string shortNames = Joined("-", option.get_snames());
  const std::string longNames = Joined("--", option.get_lnames());
  return shortNames + (shortNames.empty() || longNames.empty() ? "" : ", ") + longNames;
}

std::string KeyOf(const CLI::Option& option) { return option.get_name(false, true) + '\n' + option.get_description(); }

// "Not with --json."
void AddCompany(std::ostream& page, const char* words, const std::set<CLI::Option*>& others) {
  if (others.empty()) return;
  std::string names;
  for (const CLI::Option* other : others) names += (names.empty() ? "" : ", ") + other->get_name();
  page << Sentence(words + names);
}

void AddOption(std::ostream& page, const CLI::Option& option) {
  page << ".TP\n" << (option.get_positional() ? "\\fI" + Escaped(Usage(option)) + "\\fR" : Names(option));
  if (!option.get_positional() && TakesValue(option)) {
    page << " \\fI" << Escaped(ValueName(option)) << "\\fR";
    if (option.get_expected_max() > 1) page << " ...";
  }
  page << '\n' << Sentence(option.get_description());
  if (TakesValue(option) && !option.get_default_str().empty()) {
    page << Sentence("Default: " + option.get_default_str());
  }
  AddCompany(page, "Only with ", option.get_needs());
  AddCompany(page, "Not with ", option.get_excludes());
}

bool IsShared(const Shared& shared, const CLI::Option& option) { return shared.at(KeyOf(option)) > 1; }

void AddExample(std::ostream& page, const std::string& example) {
  page << ".RS 4\n.nf\n" << Escaped(example) << "\n.fi\n.RE\n";
}

void AddCommand(std::ostream& page, const CLI::App& program, const CLI::App& command, const Shared& shared) {
  page << ".SS \"" << Escaped(program.get_name() + ' ' + command.get_name()) << ' ' << Arguments(command) << "\"\n"
       << Sentence(command.get_description());
  std::string elsewhere;
  for (const CLI::Option* positional : Positionals(command)) AddOption(page, *positional);
  for (const CLI::Option* option : ShownOptions(command)) {
    if (!IsShared(shared, *option)) {
      AddOption(page, *option);
    } else if (option != command.get_help_ptr()) {
      elsewhere += (elsewhere.empty() ? "" : ", ") + ("\\fB" + Escaped(option->get_name()) + "\\fR");
    }
  }
  if (!elsewhere.empty()) page << ".PP\nAlso " << elsewhere << ": see below.\n";
  const Footer footer = FooterOf(command);
  const Footer ofProgram = FooterOf(program);  // a command without a footer of its own has this one
  const std::string itself = program.get_name() + ' ' + command.get_name() + ' ';
  for (const std::string& example : footer.examples) {
    if (example.compare(0, itself.size(), itself) != 0) continue;
    page << ".PP\nExample:\n.PP\n";
    AddExample(page, example);
  }
  for (const std::string& paragraph : footer.rest) {
    const bool isInherited = std::find(ofProgram.rest.begin(), ofProgram.rest.end(), paragraph) != ofProgram.rest.end();
    if (!isInherited) page << ".PP\n" << Escaped(paragraph) << '\n';
  }
}

}  // namespace

std::string ManPage(const CLI::App& program, const Facts& facts, const std::string& date) {
  const std::vector<const CLI::App*> commands = ShownCommands(program);
  Shared shared;
  for (const CLI::App* command : commands) {
    for (const CLI::Option* option : ShownOptions(*command)) ++shared[KeyOf(*option)];
  }

  std::ostringstream page;
  const std::string& name = program.get_name();
  std::string summary = program.get_description();
  if (!summary.empty() && summary.back() == '.') summary.pop_back();
  page << ".TH " << Capitals(name) << " 1 " << date << " \"" << name << ' ' << facts.version << "\" \"User Commands\"\n"
       << ".SH NAME\n" << Escaped(name) << " \\- " << Escaped(summary) << '\n'
       << ".SH SYNOPSIS\n.nf\n";
  for (const CLI::App* command : commands) {
    page << "\\fB" << Escaped(name + ' ' + command->get_name()) << "\\fR " << Arguments(*command) << '\n';
  }
  page << ".fi\n.SH COMMANDS\n";
  for (const CLI::App* command : commands) AddCommand(page, program, *command, shared);

  page << ".SH OPTIONS\n";
  for (const CLI::Option* option : ShownOptions(program)) AddOption(page, *option);
  for (const CLI::App* command : commands) {
    for (const CLI::Option* option : ShownOptions(*command)) {
      int& count = shared[KeyOf(*option)];
      if (count > 1 && option != command->get_help_ptr()) AddOption(page, *option);
      count = 0;  // said
    }
  }

  const Footer footer = FooterOf(program);
  page << ".SH EXIT STATUS\n";
  static const std::string kExitStatus = "Exit status: ";
  for (const std::string& paragraph : footer.rest) {
    const bool isNamed = paragraph.compare(0, kExitStatus.size(), kExitStatus) == 0;
    page << Escaped(paragraph.substr(isNamed ? kExitStatus.size() : 0)) << '\n';
  }
  for (const auto& [title, paragraphs] : facts.sections) {
    page << ".SH " << title << '\n';
    for (std::size_t i = 0; i < paragraphs.size(); ++i) page << (i == 0 ? "" : ".PP\n") << Escaped(paragraphs[i]) << '\n';
  }
  if (!footer.examples.empty()) {
    page << ".SH EXAMPLES\n";
    for (const std::string& example : footer.examples) AddExample(page, example);
  }
  return page.str();
}

}  // namespace VelmarManual
