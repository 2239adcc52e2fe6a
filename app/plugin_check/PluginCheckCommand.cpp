#include "FileText.h"
#include "Finding.h"
#include "Invocation.h"
#include "JsonOutput.h"
#include "plugin_check/CheckRun.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "Progress.h"
#include "TemporaryFolder.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <system_error>

namespace lusym
{

namespace
{

using check::Check;
using check::CheckResult;
using check::Outcome;

struct PluginCheckOptions {
    std::string plugin;
    std::vector<std::string> only;
    std::uint64_t seed = 1;
    unsigned int seconds = 0;
    bool asJson = false;
    bool listChecks = false;
};

std::vector<const Check*> ChosenChecks(const PluginCheckOptions& options)
{
    const auto isChosen = [&](const Check& check) {
        return options.only.empty() || std::ranges::find(options.only, check.name) != options.only.end() ||
               std::ranges::find(options.only, check.group) != options.only.end();
    };
    std::vector<const Check*> chosen;
    for (const Check& check : check::AllChecks()) {
        if (isChosen(check)) {
            chosen.push_back(&check);
        }
    }
    return chosen;
}

bool IsKnown(const std::string& name)
{
    return std::ranges::any_of(check::AllChecks(),
                               [&](const Check& check) { return check.name == name || check.group == name; });
}

std::string CheckList(const std::vector<const Check*>& checks, bool asJson)
{
    if (asJson) {
        nlohmann::ordered_json list = nlohmann::ordered_json::array();
        for (const Check* const check : checks) {
            list.push_back({{"check", check->name}, {"group", check->group}, {"contract", check->contract}});
        }
        return JsonText(list);
    }
    std::string list;
    for (const Check* const check : checks) {
        list.append(check->name).append(" (").append(check->group).append(")\n    ");
        list.append(check->contract).append("\n");
    }
    return list;
}

std::string ResultAsText(const CheckResult& result)
{
    constexpr std::size_t kColumn = 10;
    std::string text(NameOf(result.outcome));
    text.resize(kColumn, ' ');
    text.append(result.check->name).append("\n");
    for (const check::Note& note : result.notes) {
        text.append(kColumn, ' ');
        if (check::IsFinding(note.outcome)) {
            text.append(NameOf(note.side)).append(": ");
        }
        text.append(Printable(note.text)).append("\n");
    }
    return text;
}

nlohmann::ordered_json ResultAsJson(const CheckResult& result)
{
    nlohmann::ordered_json notes = nlohmann::ordered_json::array();
    for (const check::Note& note : result.notes) {
        notes.push_back({{"outcome", NameOf(note.outcome)}, {"side", NameOf(note.side)}, {"text", note.text}});
    }
    nlohmann::ordered_json json = {
        {"check", result.check->name}, {"group", result.check->group}, {"outcome", NameOf(result.outcome)}};
    if (check::IsFinding(result.outcome)) {
        json["side"] = NameOf(result.side);
    }
    json["milliseconds"] = result.time.count();
    json["notes"] = std::move(notes);
    return json;
}

std::string ReportOf(const PluginCheckOptions& options, const std::vector<CheckResult>& results)
{
    if (!options.asJson) {
        std::string report;
        for (const CheckResult& result : results) {
            report += ResultAsText(result);
        }
        return report;
    }
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const CheckResult& result : results) {
        list.push_back(ResultAsJson(result));
    }
    return JsonText({{"plugin", options.plugin}, {"seed", options.seed}, {"checks", std::move(list)}});
}

/// "2 checks: 1 pass, 1 fail (seed 1)"
std::string SummaryOf(const PluginCheckOptions& options, const std::vector<CheckResult>& results)
{
    std::array<std::size_t, 6> counts{};
    for (const CheckResult& result : results) {
        ++counts.at(static_cast<std::size_t>(result.outcome));
    }
    std::string summary = CountOf(results.size(), "check", "checks");
    char separator = ':';
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts.at(i) != 0) {
            summary.append(1, separator).append(" ").append(std::to_string(counts.at(i))).append(" ");
            summary.append(NameOf(static_cast<Outcome>(i)));
            separator = ',';
        }
    }
    return summary + " (seed " + std::to_string(options.seed) + ")\n";
}

/// A plug-in may change the working folder.
std::string AbsolutePath(const std::string& path)
{
    std::error_code error;
    const std::u8string absolute = std::filesystem::absolute(std::u8string(path.begin(), path.end()), error).u8string();
    return path.empty() || error ? path : std::string(absolute.begin(), absolute.end());
}

ExitCode RunPluginCheck(const PluginCheckOptions& options, Progress& progress)
{
    const std::vector<const Check*> checks = ChosenChecks(options);
    if (options.listChecks) {
        return PutResult(CheckList(checks, options.asJson), progress);
    }
    const TemporaryFolder folder;
    if (folder.GetPath().empty()) {
        progress.Tell("lusym: " + folder.GetError() + "\n");
        return ExitCode::Failed;
    }
    const check::CheckRun run(
        {FindPluginChecker(), AbsolutePath(options.plugin), folder.GetPath(), options.seed, options.seconds});
    std::string problem;
    if (!run.Probe(problem)) {
        progress.Tell("lusym: " + Quote(options.plugin) + " cannot be looked at: " + Printable(problem) + "\n");
        return ExitCode::InputUnreadable;
    }
    const std::vector<CheckResult> results = run.Run(checks, [&](const CheckResult& result, std::size_t done) {
        progress.Step(result.check->name, done, checks.size());
    });
    progress.Clear();
    const ExitCode written = PutResult(ReportOf(options, results), progress);
    if (written != ExitCode::Done) {
        return written;
    }
    progress.Tell(SummaryOf(options, results));
    const bool hasFinding =
        std::ranges::any_of(results, [](const CheckResult& result) { return check::IsFinding(result.outcome); });
    return hasFinding ? ExitCode::Findings : ExitCode::Done;
}

} // namespace

void AddPluginCheck(CLI::App& plugin, Invocation& invocation)
{
    CLI::App& verb = *plugin.add_subcommand("check", "Tell whether a built plug-in keeps its promises to a host");
    const auto options = std::make_shared<PluginCheckOptions>();
    CLI::Option* const file = verb.add_option("PLUGIN", options->plugin, "The library");
    verb.add_option("--only", options->only, "Only this check, or the checks of this group; may be given several times")
        ->allow_extra_args(false)
        ->type_name("NAME")
        ->check([](const std::string& name) { return IsKnown(name) ? "" : Quote(name) + " is no check and no group"; });
    verb.add_option("--seed", options->seed, "Chooses what is left to chance; the same gives the same")
        ->type_name("NUMBER");
    verb.add_option("--time-limit", options->seconds, "How long a check may take; without it a minute")
        ->check(CLI::Range(1U, 86400U).description(""))
        ->type_name("SECONDS");
    verb.add_flag("--json", options->asJson, "Results as JSON");
    CLI::Option* const list =
        verb.add_flag("--list", options->listChecks, "List the checks, with what each holds the plug-in to, and stop");
    verb.footer(
        "Each check runs in a process of its own and ends as one of: pass, skip (it cannot be found out here), warn,\n"
        "fail, time-out, crash. What is wrong is told with the side that misbehaved: plug-in, host or test.\n\n"
        "Examples:\n"
        "  lusym plugin check build/lib/liblusymbols.so\n"
        "  lusym plugin check liblusymbols.so --only loading --only near-misses --json\n"
        "  lusym plugin check --list\n\n"
        "Exit codes: 0 nothing wrong; 3 PLUGIN is no library that can be loaded; 5 a check failed, hung or broke\n"
        "down.\n");
    verb.callback([options, file, list, &invocation] {
        if (file->count() == 0 && list->count() == 0) {
            throw CLI::RequiredError("PLUGIN");
        }
        invocation = [options](Progress& progress) { return RunPluginCheck(*options, progress); };
    });
}

} // namespace lusym
