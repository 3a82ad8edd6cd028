// CommandLine.cpp - the command line: the commands, their options and help, and the run.

#include "Commands.h"
#include "Fields.h"
#include "Session.h"
#include "Terminal.h"
#include "Text.h"

#include <algorithm>
#include <cstring>

namespace fileio::tool {

namespace {

// Options a command takes besides --json, --quiet and --help.
constexpr unsigned kTreeOption = 1;
constexpr unsigned kSearchOptions = 2; // --map, --search
constexpr unsigned kDryRunOption = 4;
constexpr unsigned kFormOptions = 8; // --binary, --text
constexpr int kAnyCount = -1;

constexpr const char* kMainHelp = R"(usage: fileio <command> [options] FILE...

Inspects, checks, relinks and converts the suite's project files, in either form
(text or binary).

commands:
  info FILE...      form, version, size, section and field counts, top-level sections
  dump FILE         the file as canonical text; --tree: an outline of its sections
  check FILE...     reads every section and field; reports each problem; OK or bad
  deps FILE...      the files a project refers to, where they are, how they are found
  relink FILE       finds the missing files (--map FROM=TO, --search DIR) and stores
                    where they are now, relative to the project
  convert IN OUT    writes the file in the other form (or --binary, --text)

options of every command:
  --json            prints exactly one JSON document on standard output; its "schema"
                    member gives the version of its shape
  -q, --quiet       no progress bar and no notes on standard error
  -h, --help        the command's help

Data goes to standard output, diagnostics to standard error. No question is ever
asked: a file the library would ask a person to locate counts as missing.

exit status: 0 all is well; 1 problems found (a bad file, a missing reference, data
that could not be carried over); 2 a usage error or a file that cannot be read or
written.

environment: NO_COLOR (set: no colours); FILEIO_PROGRESS_DELAY (milliseconds of work
before the progress bar shows on a terminal; 500)

'fileio <command> --help' tells more.
)";

constexpr const char* kInfoHelp = R"(usage: fileio info [--json] FILE...

For each file: its form (text or binary), its version (the Version field of its
FILEINFO section), its size, how many sections and fields it holds, and its top-level
sections. A file with problems is told so (exit status 1); 'fileio check' lists them.
)";

constexpr const char* kDumpHelp = R"(usage: fileio dump [--tree] [--json] FILE

Prints the file as canonical text: the text form, one section or field to a line,
every value written as the suite writes it, whichever form the file is in. The same
project gives the same text from either form.

  --tree   an outline instead: sections indented by depth, each field with its value
  --json   the outline as one JSON document (nested "items")

A field the tool does not know is copied as it stands from a text file. Problems go to
standard error; a file with problems gives exit status 1.
)";

constexpr const char* kCheckHelp = R"(usage: fileio check [--json] FILE...

Reads every section and field of each file with the typed readers and reports each
problem with its byte offset and its place in the file:

  robot.prj: 0x1a2c: LIBRARY/MODELFILE/MESH[3]/Color: 2 of 3 values

then 'OK' or 'bad' for the file. A place names the sections from the top; a section
below the top level carries its position among the sections of its word in its parent,
from 0 (a top-level one from its second on).

Errors make a file bad: a value that does not read as its kind, a section not closed,
data cut short. Notes do not: an unknown section (skipped, as the suite skips it), or
an unknown field of a text file (skipped). An unknown field of a binary file is an
error: the binary form does not tell the size of its value.
)";

constexpr const char* kDepsHelp =
    R"(usage: fileio deps [--map FROM=TO]... [--search DIR]... [--json] FILE...

Lists every file a project refers to: the fields that name a model, an image, a sound
or a linked file (listed below). For each: what the project stores, the absolute path it
resolves to against the project's folder, and whether the file is there; when it is
not, how the search would find it.

Stored forms: a plain universal path (Maps/skin.png, or an absolute one such as
C:/Users/ann/Robot/Maps/skin.png; either separator is read), or a match name, the same
within double quotes ("Models/arm.mdl").

The search, in order (names compare without regard to case everywhere):
  case          the same path with other letter case
  alias         the library's folder aliases, learnt from --map FROM=TO
  search path   a file of that name directly in a --search folder
  name search   a file of that name anywhere below a --search folder
A step that finds several files reports them all as ambiguous and picks none.

  --map FROM=TO   the folder FROM (as the project stored it, either separator) is now
                  TO; also teaches the shorter pair their common ending implies
  --search DIR    a folder to look in

Exit status 1 when a reference is missing or ambiguous.
)";

constexpr const char* kRelinkHelp =
    R"(usage: fileio relink FILE [--map FROM=TO]... [--search DIR]... [--dry-run] [--json]

Finds every missing file the project refers to, as 'fileio deps' does (see its help for
the search), and stores where each one is now: a universal path relative to the
project's folder, in the reference's own form (a match name stays quoted). Nothing else
of the file changes. The project is saved through the library's crash-safe save: it is
replaced whole, or not at all. A file found in several places is reported as ambiguous
and left as it is.

Prints the references it changed or could not find, then:

  Total N | Changed N | Missing N | Ambiguous N

  --map FROM=TO   the folder FROM is now TO (see 'fileio deps --help')
  --search DIR    a folder to look in
  --dry-run       tells what would change; writes nothing

Exit status 1 when a reference stays missing or ambiguous; 2 when the project cannot be
written (a read-only file is left untouched).
)";

constexpr const char* kConvertHelp = R"(usage: fileio convert [--binary|--text] [--json] IN OUT

Writes IN in the other form (text to binary, binary to text), or in the form asked for,
to OUT through the library's crash-safe save. The text written is the canonical text of
'fileio dump'; text -> binary -> text gives the same bytes.

A field or section the binary form cannot carry (one the tool does not know in a text
file) is left out, with exit status 1. A file that cannot be read to its end is not
converted, and OUT is left as it was.
)";

struct CommandSpec {
    const char* name;
    int minFiles;
    int maxFiles;
    unsigned options;
    const char* help;
    int (*run)(const CommandLine&, Output&);
};

/// The line width the generated part of the help is wrapped at.
constexpr std::size_t kHelpWidth = 84;

/// The help of a command; the ones that search add the fields they read as references.
std::string HelpOf(const CommandSpec& command) {
    std::string help = command.help;
    if ((command.options & kSearchOptions) == 0)
        return help;
    help += "\nThe fields whose values name files:\n";
    std::size_t column = 0;
    for (const FieldRule& field : KnownFields()) {
        if (!field.reference)
            continue;
        if (column + 1 + std::strlen(field.word) > kHelpWidth) {
            help += '\n';
            column = 0;
        }
        help.append(column == 0 ? "  " : " ").append(field.word);
        column = help.size() - help.rfind('\n') - 1;
    }
    return help + '\n';
}

constexpr CommandSpec kCommands[] = {
    {"info", 1, kAnyCount, 0, kInfoHelp, &RunInfo},
    {"dump", 1, 1, kTreeOption, kDumpHelp, &RunDump},
    {"check", 1, kAnyCount, 0, kCheckHelp, &RunCheck},
    {"deps", 1, kAnyCount, kSearchOptions, kDepsHelp, &RunDeps},
    {"relink", 1, 1, kSearchOptions | kDryRunOption, kRelinkHelp, &RunRelink},
    {"convert", 2, 2, kFormOptions, kConvertHelp, &RunConvert},
};

const CommandSpec* FindCommand(std::string_view name) {
    for (const CommandSpec& command : kCommands) {
        if (name == command.name)
            return &command;
    }
    return nullptr;
}

bool IsHelp(std::string_view arg) {
    return arg == "-h" || arg == "--help" || arg == "help";
}

/// Whether the flag is among the options, before any "--".
bool HasFlag(const std::vector<std::string>& args, std::string_view flag) {
    const auto end = std::find(args.begin(), args.end(), "--");
    return std::find(args.begin(), end, flag) != end;
}

/// Reads the options and files after the command's name. False, with the reason, on a usage
/// error.
bool ParseCommandLine(const CommandSpec& command, const std::vector<std::string>& args,
                      CommandLine& line, std::string& why) {
    line.command = command.name;
    bool optionsDone = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (optionsDone || arg.size() < 2 || arg[0] != '-') {
            line.files.push_back(arg);
            continue;
        }
        if (arg == "--") {
            optionsDone = true;
            continue;
        }
        const std::size_t equals = arg.find('=');
        const std::string name = arg.substr(0, equals);
        const auto takes = [&](unsigned option) { return (command.options & option) != 0; };
        const auto value = [&](std::string& out) {
            if (equals != std::string::npos) {
                out = arg.substr(equals + 1);
                return true;
            }
            if (i + 1 >= args.size()) {
                why = name + " needs a value";
                return false;
            }
            out = args[++i];
            return true;
        };
        if (name == "-h" || name == "--help") {
            line.help = true;
        } else if (name == "--json") {
            line.json = true;
        } else if (name == "-q" || name == "--quiet") {
            line.quiet = true;
        } else if (name == "--tree" && takes(kTreeOption)) {
            line.tree = true;
        } else if (name == "--dry-run" && takes(kDryRunOption)) {
            line.dryRun = true;
        } else if ((name == "--binary" || name == "--text") && takes(kFormOptions)) {
            const TargetForm form = name == "--binary" ? TargetForm::Binary : TargetForm::Text;
            if (line.form != TargetForm::Other && line.form != form) {
                why = "--binary and --text exclude each other";
                return false;
            }
            line.form = form;
        } else if ((name == "--map" || name == "--search") && takes(kSearchOptions)) {
            std::string text;
            if (!value(text))
                return false;
            (name == "--map" ? line.maps : line.searches).push_back(text);
        } else {
            why = "unknown option '" + arg + "'";
            return false;
        }
        if (equals != std::string::npos && name != "--map" && name != "--search") {
            why = name + " takes no value";
            return false;
        }
    }
    if (line.help)
        return true;
    const int count = static_cast<int>(line.files.size());
    if (count < command.minFiles || (command.maxFiles != kAnyCount && count > command.maxFiles)) {
        why = command.maxFiles == 1                  ? "takes one FILE"
              : command.minFiles == command.maxFiles ? "takes IN and OUT"
                                                     : "needs at least one FILE";
        return false;
    }
    return true;
}

/// Tells a usage error, and with --json gives the one document all the same (its command
/// as it was typed).
int UsageError(Output& output, const char* command, const std::string& why, bool json,
               const std::string& typed = {}) {
    const std::string where = command != nullptr ? std::string(command) + ": " : std::string();
    output.Error(where + Printable(why) + " (see 'fileio " +
                 (command != nullptr ? std::string(command) + " " : std::string()) + "--help')");
    if (json) {
        JsonWriter document(output.Out());
        BeginDocument(document, command != nullptr ? command : typed.c_str());
        document.Key("error");
        document.String(why);
        document.EndObject();
        document.Finish();
    }
    return kExitError;
}

} // namespace

int Main(const std::vector<std::string>& args) {
    PrepareStandardStreams();
    Output output(stdout, stderr, HasFlag(args, "-q") || HasFlag(args, "--quiet"),
                  HasFlag(args, "--json"));
    if (args.empty())
        return UsageError(output, nullptr, "no command", false);
    if (IsHelp(args[0]) && args.size() == 1) {
        output.Data(kMainHelp);
        return kExitOk;
    }
    if (args[0] == "--version") {
        output.Data("fileio " FILEIO_VERSION "\n");
        return kExitOk;
    }
    // "fileio help COMMAND" is "fileio COMMAND --help".
    const std::string& name = IsHelp(args[0]) ? args[1] : args[0];
    const CommandSpec* command = FindCommand(name);
    if (command == nullptr)
        return UsageError(output, nullptr, Concat({"unknown command '", name, "'"}),
                          HasFlag(args, "--json"), name);
    CommandLine line;
    std::string why;
    if (IsHelp(args[0])) {
        line.help = true;
    } else if (!ParseCommandLine(*command, args, line, why)) {
        return UsageError(output, command->name, why, HasFlag(args, "--json"));
    }
    if (line.help) {
        output.Data(HelpOf(*command));
        return kExitOk;
    }
    int status = kExitOk;
    {
        Session session(output);
        status = command->run(line, output);
    }
    if (output.Failed()) {
        output.Error("standard output cannot be written");
        status = kExitError;
    }
    return status;
}

} // namespace fileio::tool
