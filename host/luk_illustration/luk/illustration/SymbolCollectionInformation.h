#pragma once

#include <luk/illustration/CollectionInformation.h>

#include <string>

namespace luk::illustration
{

/// Length unit and free text of a symbol library.
class LUHOST_API SymbolCollectionInformation : public CollectionInformation
{
public:
    SymbolCollectionInformation();
    SymbolCollectionInformation(const SymbolCollectionInformation&);
    SymbolCollectionInformation& operator=(const SymbolCollectionInformation&);
    ~SymbolCollectionInformation() override;

    const std::string& GetUnits() const noexcept { return m_units; }
    void SetUnits(const std::string& units) { m_units = units; }
    const std::string& GetInformation() const noexcept { return m_information; }
    void SetInformation(const std::string& information) { m_information = information; }

private:
    std::string m_units;
    std::string m_information;
};

} // namespace luk::illustration
