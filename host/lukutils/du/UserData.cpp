#include <du/Symbol.h>
#include <du/UserData.h>

#include <mutex>
#include <unordered_map>

namespace du
{

unsigned UserData::GetId(std::string_view key)
{
    struct Registry {
        std::mutex mutex;
        std::unordered_map<Symbol, unsigned> idByKey;
    };
    // Plug-ins keep ids in constants, so the registry lives as long as the process.
    static Registry* const s_registry = new Registry;

    const Symbol symbol(key);
    const std::lock_guard lock(s_registry->mutex);
    const auto nextId = static_cast<unsigned>(s_registry->idByKey.size() + 1);
    return s_registry->idByKey.try_emplace(symbol, nextId).first->second;
}

} // namespace du
