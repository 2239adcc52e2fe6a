#pragma once

#include "DemoFiles.h"

#include <string>
#include <vector>

namespace lusym
{

class Progress;

/// What the road of a document starts from.
struct DemoStart {
    std::string library;  ///< folder of the example library
    std::string manual;   ///< folder with the table of symbols and the new picture of one of them
    std::string product;  ///< folder with the model and its service tree
    std::string language; ///< as the user wants it; may be empty
};

/// A road in the verbs that anybody may type: each is told, run, and lets its result be seen. Ends at the first step that
/// fails, which has told why.
class DemoRoad
{
public:
    DemoRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
        : m_start(start), m_files(files), m_progress(progress)
    {
    }

protected:
    using Arguments = std::vector<std::string>;

    /// Of the copy of the example library, in the folder of the files.
    static constexpr const char* kLibrary = "library";
    static constexpr const char* kUserLibrary = "library/SymbolsLibrary/PartSymbolLibrary.xml";
    static constexpr const char* kDeliveredLibrary = "library/SymbolsLibrary/standard/PartSymbolLibrary.xml";

    ~DemoRoad() = default;

    bool Say(const std::string& words);
    bool Run(const Arguments& arguments);
    bool RunInLanguage(Arguments arguments);
    bool Fail(const std::string& reason);

    /// Changes an entry of the user's library as its author would, with the reader and the writer that every verb uses:
    /// its title, and the file that lies at a place of the copy.
    bool ChangeEntry(const std::string& id, const std::string& title, const std::string& file,
                     const std::string& newFile);

    std::string PathOf(const std::string& name) const { return m_files.PathOf(name); }

    const DemoStart& m_start;
    DemoFiles& m_files;
    Progress& m_progress;
};

} // namespace lusym
