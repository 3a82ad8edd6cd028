// ReferenceCommands.cpp - deps and relink: a project's file references, where they are, and
// how the library's search finds the missing ones.

#include "Commands.h"

#include "References.h"
#include "Text.h"

#include <algorithm>

namespace fileio::tool {

namespace {

/// The width of the status column of the reference lists.
constexpr int kStatusWidth = 11;
constexpr std::string_view kContinuation = "             ";

/// A file's references and where each one is.
struct ResolvedFile {
    std::vector<Reference> references;
    std::vector<Resolution> resolutions;
    std::vector<Problem> problems;
    bool complete = true;
};

/// How many references ended each way.
struct Tally {
    int exist = 0;
    int found = 0;
    int missing = 0;
    int ambiguous = 0;

    void Count(Found how) {
        switch (how) {
        case Found::Exists:
            ++exist;
            break;
        case Found::Missing:
            ++missing;
            break;
        case Found::Ambiguous:
            ++ambiguous;
            break;
        default:
            ++found;
        }
    }
    [[nodiscard]] bool AllFound() const { return missing == 0 && ambiguous == 0; }
};

/// Learns the --map aliases and the --search folders; false after telling a usage error.
bool PrepareSearch(const CommandLine& line, ReferenceSearch& search, Output& output) {
    for (const std::string& mapping : line.maps) {
        std::string why;
        if (!ReferenceSearch::AddMapping(mapping, why)) {
            output.Error("--map: " + Printable(why));
            return false;
        }
    }
    std::vector<std::string> folders;
    for (const std::string& folder : line.searches) {
        folders.push_back(AbsolutePath(folder));
        if (!DirExists(String(folders.back())) || folder.find(';') != std::string::npos) {
            output.Error("--search: '" + Printable(folder) + "' is not a folder");
            return false;
        }
    }
    search.SetSearchFolders(folders);
    return true;
}

/// Walks a loaded project and resolves its references against its own folder.
ResolvedFile ResolveFile(MemoryStream& in, const InputFile& file, ReferenceSearch& search,
                         const Output& output) {
    SetBasePath(String(file.path));
    ReferenceCollector collector;
    ResolvedFile resolved;
    resolved.complete = Walk(in, collector, output, file).complete;
    resolved.references = collector.References();
    resolved.problems = collector.Problems();
    ProgressBar progress(output, Printable(file.shown));
    for (const Reference& reference : resolved.references) {
        resolved.resolutions.push_back(search.Resolve(reference));
        progress.Advance(resolved.resolutions.size(), resolved.references.size());
    }
    return resolved;
}

std::string BaseFolder(const InputFile& file) {
    return std::string(String(file.path).GetPathOnly().View());
}

Colour ColourOf(Found how) {
    return how == Found::Exists ? Colour::Good : IsFound(how) ? Colour::Doubtful : Colour::Bad;
}

/// A reference's entry of a list: its status and place, then what is stored, where it
/// resolves to and, below, where the search found it.
std::string ReferenceText(const Output& output, const Reference& reference,
                          const Resolution& resolution, const std::string* rewritten) {
    std::string status = FoundName(resolution.how);
    status.resize(std::max<std::size_t>(status.size(), kStatusWidth), ' ');
    std::string text = "  " + output.Paint(status, ColourOf(resolution.how)) +
                       Printable(reference.place) + "\n" + std::string(kContinuation) +
                       Printable(reference.stored);
    if (rewritten != nullptr)
        return text + " => " + Printable(*rewritten) + "\n";
    text += " -> " + Printable(resolution.resolved) + "\n";
    if (resolution.how != Found::Exists && !resolution.found.empty())
        text += std::string(kContinuation) + "found " + Printable(resolution.found) + "\n";
    for (const std::string& candidate : resolution.candidates)
        text += std::string(kContinuation) + "found " + Printable(candidate) + "\n";
    return text;
}

void ReferenceJson(JsonWriter& json, const Reference& reference, const Resolution& resolution) {
    json.Key("place");
    json.String(reference.place);
    json.Key("field");
    json.String(reference.field);
    json.Key("stored");
    json.String(reference.stored);
    json.Key("offset");
    json.Number(reference.offset);
    json.Key("resolved");
    json.String(resolution.resolved);
    json.Key("status");
    json.String(FoundName(resolution.how));
    json.Key("found");
    if (IsFound(resolution.how))
        json.String(resolution.found);
    else
        json.Null();
    json.Key("candidates");
    json.BeginArray();
    for (const std::string& candidate : resolution.candidates)
        json.String(candidate);
    json.EndArray();
}

void TallyJson(JsonWriter& json, const Tally& tally) {
    json.Key("exist");
    json.Number(tally.exist);
    json.Key("found");
    json.Number(tally.found);
    json.Key("missing");
    json.Number(tally.missing);
    json.Key("ambiguous");
    json.Number(tally.ambiguous);
}

/// The status a walk's problems give: a file that could not be read to its end or has
/// errors is a problem found.
int WalkStatus(const ResolvedFile& resolved) {
    const bool bad = !resolved.complete ||
                     std::any_of(resolved.problems.begin(), resolved.problems.end(),
                                 [](const Problem& p) { return p.severity == Severity::Error; });
    return bad ? kExitProblems : kExitOk;
}

} // namespace

int RunDeps(const CommandLine& line, Output& output) {
    JsonWriter json(output.Out());
    if (line.json) {
        BeginDocument(json, "deps");
        json.Key("files");
        json.BeginArray();
    }
    const auto finish = [&](int status) {
        if (line.json) {
            json.EndArray();
            json.EndObject();
            json.Finish();
        }
        return status;
    };
    const std::vector<InputFile> files = InputFiles(line);
    ReferenceSearch search;
    if (!PrepareSearch(line, search, output))
        return finish(kExitError);

    int status = kExitOk;
    for (const InputFile& file : files) {
        MemoryStream in;
        std::string why;
        if (!LoadInput(file, in, output, why)) {
            status = kExitError;
            if (line.json) {
                json.BeginObject();
                json.Key("file");
                json.String(file.shown);
                json.Key("error");
                json.String(why);
                json.EndObject();
            }
            continue;
        }
        const ResolvedFile resolved = ResolveFile(in, file, search, output);
        TellProblems(output, file.shown, resolved.problems);
        Tally tally;
        std::string text = Printable(file.shown) + " (base " + Printable(BaseFolder(file)) + ")\n";
        if (line.json) {
            json.BeginObject();
            json.Key("file");
            json.String(file.shown);
            json.Key("base");
            json.String(BaseFolder(file));
            json.Key("references");
            json.BeginArray();
        }
        for (std::size_t i = 0; i < resolved.references.size(); ++i) {
            tally.Count(resolved.resolutions[i].how);
            if (line.json) {
                json.BeginObject();
                ReferenceJson(json, resolved.references[i], resolved.resolutions[i]);
                json.EndObject();
            } else {
                text +=
                    ReferenceText(output, resolved.references[i], resolved.resolutions[i], nullptr);
            }
        }
        if (line.json) {
            json.EndArray();
            TallyJson(json, tally);
            WriteProblems(json, resolved.problems);
            json.EndObject();
        } else {
            output.Data(text + Printable(file.shown) + ": " +
                        std::to_string(resolved.references.size()) + " references: " +
                        std::to_string(tally.exist) + " exist, " + std::to_string(tally.found) +
                        " found by the search, " + std::to_string(tally.missing) + " missing, " +
                        std::to_string(tally.ambiguous) + " ambiguous\n");
        }
        status =
            std::max({status, WalkStatus(resolved), tally.AllFound() ? kExitOk : kExitProblems});
    }
    return finish(status);
}

int RunRelink(const CommandLine& line, Output& output) {
    const InputFile file = InputFiles(line).front();
    JsonWriter json(output.Out());
    if (line.json) {
        BeginDocument(json, "relink");
        json.Key("file");
        json.String(file.shown);
        json.Key("dryRun");
        json.Bool(line.dryRun);
    }
    const auto finish = [&](int status, bool saved) {
        if (line.json) {
            json.Key("saved");
            json.Bool(saved);
            json.EndObject();
            json.Finish();
        }
        return status;
    };
    ReferenceSearch search;
    MemoryStream in;
    std::string why;
    if (!PrepareSearch(line, search, output))
        return finish(kExitError, false);
    if (!LoadInput(file, in, output, why)) {
        if (line.json) {
            json.Key("error");
            json.String(why);
        }
        return finish(kExitError, false);
    }
    const ResolvedFile resolved = ResolveFile(in, file, search, output);
    TellProblems(output, file.shown, resolved.problems);
    if (!resolved.complete) {
        output.Error(Printable(file.shown) + ": not relinked: the file cannot be read to its end");
        if (line.json)
            WriteProblems(json, resolved.problems);
        return finish(kExitProblems, false);
    }

    std::vector<Rewrite> rewrites;
    Tally tally;
    std::string text = Printable(file.shown) + " (base " + Printable(BaseFolder(file)) + ")\n";
    if (line.json) {
        json.Key("base");
        json.String(BaseFolder(file));
        json.Key("references");
        json.BeginArray();
    }
    for (std::size_t i = 0; i < resolved.references.size(); ++i) {
        const Reference& reference = resolved.references[i];
        const Resolution& resolution = resolved.resolutions[i];
        tally.Count(resolution.how);
        const std::string* rewritten = nullptr;
        if (resolution.how != Found::Exists && IsFound(resolution.how)) {
            std::string stored = ReferenceSearch::StoredText(reference, resolution.found);
            if (stored != reference.stored) {
                rewrites.push_back(Rewrite{&reference, std::move(stored)});
                rewritten = &rewrites.back().stored;
            }
        }
        if (line.json) {
            json.BeginObject();
            ReferenceJson(json, reference, resolution);
            json.Key("rewritten");
            if (rewritten != nullptr)
                json.String(*rewritten);
            else
                json.Null();
            json.EndObject();
        } else if (resolution.how != Found::Exists) {
            text += ReferenceText(output, reference, resolution, rewritten);
        }
    }
    const std::string summary = "Total " + std::to_string(resolved.references.size()) +
                                " | Changed " + std::to_string(rewrites.size()) + " | Missing " +
                                std::to_string(tally.missing) + " | Ambiguous " +
                                std::to_string(tally.ambiguous);
    if (line.json) {
        json.EndArray();
        json.Key("total");
        json.Number(static_cast<unsigned long long>(resolved.references.size()));
        json.Key("changed");
        json.Number(static_cast<unsigned long long>(rewrites.size()));
        json.Key("missing");
        json.Number(tally.missing);
        json.Key("ambiguous");
        json.Number(tally.ambiguous);
        WriteProblems(json, resolved.problems);
    } else {
        output.Data(text + summary + "\n");
    }

    const int status = std::max(WalkStatus(resolved), tally.AllFound() ? kExitOk : kExitProblems);
    if (rewrites.empty()) {
        output.Note(Printable(file.shown) + ": nothing to change");
        return finish(status, false);
    }
    if (line.dryRun) {
        output.Note(Printable(file.shown) + ": not saved (--dry-run)");
        return finish(status, false);
    }
    std::string bytes;
    if (!RewriteReferences(in, rewrites, bytes, why)) {
        output.Error(Printable(file.shown) + ": " + Printable(why));
        return finish(kExitError, false);
    }
    if (!SaveFile(file.path, bytes)) {
        output.Error(Printable(file.shown) + ": not saved");
        return finish(kExitError, false);
    }
    output.Note(Printable(file.shown) + ": saved");
    return finish(status, true);
}

} // namespace fileio::tool
