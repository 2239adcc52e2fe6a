#include "app/Process.h"
#include "plugin_check/Check.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <du/ReferenceLedger.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <map>
#include <utility>

namespace
{

using namespace test;
using Json = nlohmann::json;
using Outcomes = std::map<std::string, std::string>;

/// Checks a plug-in with a fault. @return the outcome of each check by its name
Outcomes Check(const std::string& plugin, const std::string& fault, int exitCode,
               const std::vector<std::string>& options = {})
{
    std::vector<std::string> arguments = {"plugin", "check", plugin, "--json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Json report =
        Json::parse(RunLusym(arguments, exitCode, {{"LUSYM_FAULT=" + fault}, 0, {}}).out, nullptr, false);
    Outcomes outcomes;
    for (const Json& check : report.value("checks", Json::array())) {
        outcomes[check["check"]] = check["outcome"];
    }
    return outcomes;
}

std::vector<std::string> FindingsOf(const Outcomes& outcomes)
{
    std::vector<std::string> names;
    for (const auto& [name, outcome] : outcomes) {
        if (outcome == "fail" || outcome == "crash" || outcome == "time-out") {
            names.push_back(name);
        }
    }
    return names;
}

/// The build that looks at every access to memory is too slow to look at everything for each fault.
constexpr bool kIsSlow =
#if defined(__SANITIZE_ADDRESS__)
    true;
#else
    false;
#endif

/// Faults of the plug-in, each named by the check that has to find it.
class PluginFault : public testing::TestWithParam<std::string>
{
};

std::vector<std::string> FaultNames()
{
    std::vector<std::string> names;
    for (const lusym::check::Check& check : lusym::check::AllChecks()) {
        const bool hasLibraryOfItsOwn = check.name == "exports" || check.name == "bind-now";
        const bool isFindable = LUHOST_REFERENCE_LEDGER != 0 || check.name != "owner-tags";
        if (!hasLibraryOfItsOwn && isFindable) {
            names.emplace_back(check.name);
        }
    }
    return names;
}

TEST_P(PluginFault, TripsItsCheckAndNoOther)
{
    const std::string& fault = GetParam();
    const bool hangs = fault == "unreadable-files";
    std::vector<std::string> its = {"--only", fault};
    if (hangs) {
        its.insert(its.end(), {"--time-limit", "2"});
    }
    EXPECT_EQ(FindingsOf(Check(FAULTY_PLUGIN, fault, 5, its)), std::vector<std::string>{fault});

    std::vector<std::string> others;
    for (const lusym::check::Check& check : lusym::check::AllChecks()) {
        if (check.name != fault) {
            others.insert(others.end(), {"--only", std::string(check.name)});
        }
    }
    if (!kIsSlow) {
        EXPECT_EQ(FindingsOf(Check(FAULTY_PLUGIN, fault, 0, others)), std::vector<std::string>());
    }
}

INSTANTIATE_TEST_SUITE_P(All, PluginFault, testing::ValuesIn(FaultNames()), [](const auto& fault) {
    std::string name = fault.param;
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST(PluginCheck, OurPluginKeepsEveryPromise)
{
    for (const char* const plugin : {GOOD_PLUGIN, FAULTY_PLUGIN}) {
        Outcomes outcomes = Check(plugin, "", 0);
        EXPECT_EQ(outcomes.size(), lusym::check::AllChecks().size());
        if (LUHOST_REFERENCE_LEDGER == 0) {
            EXPECT_EQ(std::exchange(outcomes["owner-tags"], "pass"), "skip");
        }
        for (const auto& [name, outcome] : outcomes) {
            EXPECT_EQ(outcome, "pass") << name;
        }
    }
}

TEST(PluginCheck, ALibraryThatCannotBeLoadedFailsWhereItIsLoaded)
{
    for (const auto& [plugin, check] : {std::pair(PLUGIN_WITHOUT_CREATE, "exports"), {UNBOUND_PLUGIN, "bind-now"}}) {
        const Outcomes outcomes = Check(plugin, "", 5);
        EXPECT_EQ(outcomes.at(check), "fail");
        EXPECT_EQ(outcomes.at("requests"), "skip");
        // Where nothing looks at the reason it must not pass either.
        EXPECT_EQ(Check(plugin, "", 5, {"--only", "requests"}).at("requests"), "fail");
    }
}

TEST(PluginCheck, TellsOutcomesSidesAndReasons)
{
    const auto run = [](const std::string& fault, std::vector<std::string> options, int exitCode) {
        options.insert(options.begin(), {"plugin", "check", FAULTY_PLUGIN, "--only"});
        return RunLusym(options, exitCode, {{"LUSYM_FAULT=" + fault}, 0, {}});
    };
    EXPECT_EQ(
        run("requests", {"requests"}, 5).out,
        "fail      requests\n          plug-in: the request (\"create\", \"annotation\", \"symbol3dflattened\") is "
        "answered with false\n");
    EXPECT_TRUE(
        run("unload-safety", {"unload-safety"}, 5).out.starts_with("crash     unload-safety\n          plug-in: the "));
    const ProcessResult hangs = run("unreadable-files", {"unreadable-files", "--time-limit", "2"}, 5);
    EXPECT_TRUE(Contains(hangs.out, "plug-in: the check did not end within 2 seconds\n")) << hangs.out;
    EXPECT_EQ(hangs.err, "1 check: 1 time-out (seed 1)\n");
    EXPECT_EQ(run("thread-while-loaded", {"no-thread-left"}, 0).out,
              "warn      no-thread-left\n          it runs a thread of its own while it is loaded\n");
}

TEST(PluginCheck, TellsWhatItCannotLookAt)
{
    const TemporaryFolder folder;
    const std::vector<std::pair<std::vector<std::string>, int>> cases = {
        {{folder.Path("missing.so")}, 3},
        {{folder.Write("text.so", "no library")}, 3},
        {{folder.Path()}, 3},
        {{GOOD_PLUGIN, "--only", "no-such-check"}, 2},
        {{GOOD_PLUGIN, "--seed", "x"}, 2},
        {{}, 2},
    };
    for (auto [arguments, exitCode] : cases) {
        arguments.insert(arguments.begin(), {"plugin", "check"});
        const ProcessResult result = RunLusym(arguments, exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with("lusym: ")) << result.err;
    }
}

TEST(PluginCheck, LeavesNoFileBehind)
{
    for (const int signalNumber : {0, SIGINT}) {
        const TemporaryFolder folder;
        RunProcess({LUSYM_PROGRAM, "plugin", "check", GOOD_PLUGIN, "--only", "library"},
                   {{"TMPDIR=" + folder.Path()}, signalNumber, folder.Path("lusym-")});
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path())) << signalNumber;
    }
}

TEST(PluginCheck, TheDocumentationHasEveryCheck)
{
    const std::string page = TemporaryFolder::ReadFile(PLUGIN_CHECK_PAGE);
    std::string expected;
    std::string group;
    for (const Json& check : Json::parse(RunLusym({"plugin", "check", "--list", "--json"}).out)) {
        if (check["group"] != group) {
            group = check["group"];
            expected += "\n### " + group + "\n";
        }
        expected += "\n`" + check["check"].get<std::string>() + "`: " + check["contract"].get<std::string>() + "\n";
    }
    const std::size_t begin = page.find("\n### ");
    ASSERT_NE(begin, std::string::npos);
    EXPECT_EQ(page.substr(begin, page.find("\n## ", begin) - begin), expected);
}

} // namespace
