#pragma once

#include "Finding.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace du
{
class MessageTable;
}

namespace lusym
{

/// Looks up the message keys of a document in every language of the table, each key once.
class MessageKeyExaminer
{
public:
    /// @param table null when there is none
    explicit MessageKeyExaminer(std::shared_ptr<const du::MessageTable> table);

    /// @param key stays where it is for as long as this object lives
    void Examine(std::string_view key, std::size_t line, std::vector<Finding>& findings);

    /// Tells once that there is no table, if a key was met.
    void Finish(std::vector<Finding>& findings) const;

private:
    std::string MissingLanguages(std::string_view key) const;

    const std::shared_ptr<const du::MessageTable> m_table;
    std::unordered_set<std::string_view> m_seen;
    std::size_t m_uses = 0;
    std::size_t m_firstLine = 0;
};

} // namespace lusym
