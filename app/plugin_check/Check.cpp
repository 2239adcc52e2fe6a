#include "Check.h"

#include <algorithm>
#include <vector>

namespace lusym::check
{

namespace
{

std::vector<Check> GatherChecks()
{
    std::vector<Check> checks;
    for (const auto& group : {LoadingChecks(), FactoryChecks(), CountChecks(), ContentChecks(), LibraryChecks(),
                              ObserverChecks(), FileChecks(), SceneChecks(), LockChecks(), ProcessChecks()}) {
        checks.insert(checks.end(), group.begin(), group.end());
    }
    return checks;
}

} // namespace

std::span<const Check> AllChecks()
{
    static const std::vector<Check> s_checks = GatherChecks();
    return s_checks;
}

const Check* FindCheck(std::string_view name)
{
    const std::span<const Check> checks = AllChecks();
    const auto found = std::ranges::find(checks, name, &Check::name);
    return found == checks.end() ? nullptr : &*found;
}

} // namespace lusym::check
