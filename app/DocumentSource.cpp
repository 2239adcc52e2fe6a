#include "DocumentSource.h"

#include "catalog/PartslibraryItem.h"
#include "DocumentUnknown.h"
#include "EntryIndex.h"
#include "FileText.h"
#include "Finding.h"
#include "LibraryWriting.h"
#include "OutputFile.h"
#include "Printable.h"
#include "ProgramPaths.h"
#include "Progress.h"

#include <luhost/io/PictureDecoders.h>
#include <luhost/io/ProductImport.h>
#include <luhost/io/ZipPackageFormat.h>
#include <luhost/ProductMeshReader.h>
#include <luhost/Session.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luloader/Loader.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

using luk::illustration::SymbolTemplateCollection;

luhost::SessionConfig ConfigOfDocuments()
{
    luhost::SessionConfig config;
    config.loader.decoders = luhost::io::MakePictureDecoders();
    config.loader.shapeReaders = {std::make_shared<luhost::ProductMeshReader>(),
                                  std::make_shared<luhost::io::ModelReader>(FindImporter())};
    return config;
}

std::string FolderOf(const std::string& file)
{
    std::error_code error;
    const fs::path absolute = fs::absolute(file, error);
    return (error ? fs::path(file) : absolute).lexically_normal().parent_path();
}

void RefuseEmpty(CLI::Option& option)
{
    option.check([](const std::string& name) { return name.empty() ? "needs the name of a file" : std::string(); });
}

} // namespace

DocumentSource::DocumentSource(const DocumentOptions& options, Progress& progress)
    : m_options(options), m_progress(progress), m_library(options.library, progress, ConfigOfDocuments())
{
}

DocumentSource::~DocumentSource() = default;

void DocumentSource::Create()
{
    m_document = nullptr;
    m_document = luhost::Document::Create(MakeSetup());
    for (const LibraryPlace& place : GetLibraryPlaces()) {
        RecordLibrary(place);
    }
}

luhost::Document::Setup DocumentSource::MakeSetup()
{
    luhost::Document::Setup setup;
    setup.createAnnotation = [this](const std::string& classWord) {
        return m_library.CreateComponent("create", "annotation", classWord);
    };
    setup.packages = std::make_shared<luhost::io::ZipPackageFormat>();
    return setup;
}

ExitCode DocumentSource::Open(const std::string& name, Entries entries)
{
    m_name = name;
    m_progress.Step("opening " + name);
    m_document = nullptr;
    m_entryProblems.clear();
    SymbolTemplateCollection::GetCollection()->Clear();
    std::string error;
    m_claim = std::make_unique<FileClaim>(name);
    m_document = luhost::Document::Open(name, MakeSetup(), error);
    if (!m_document) {
        m_progress.Tell(Printable(name) + ": error: the document cannot be opened: " + Printable(error) +
                        ". Name a file that \"lusym document new\" or \"lusym symbol place\" has written.\n");
        return ExitCode::InputUnreadable;
    }
    if (!m_document->HasAllFiles()) {
        m_progress.Tell(Printable(name) + ": error: its pictures and shapes cannot all be unpacked into " +
                        Printable(GetPictureFolder()) + ". Make room there, or name another folder with TMPDIR.\n");
        return ExitCode::Failed;
    }
    m_recorded = ReadRecordedLibraries(m_document->GetLibraryText(), FolderOf(name));
    if (entries == Entries::Load) {
        LoadOwnEntries();
    }
    return ExitCode::Done;
}

void DocumentSource::LoadOwnEntries()
{
    const std::string& text = m_document->GetLibraryText();
    if (text.empty()) {
        return;
    }
    LibraryPlace place;
    place.name = m_name + "/library.xml";
    place.root = m_library.GetTemporaryFolder();
    place.origin = LibraryPlace::Origin::ORIGIN_OOTB;
    const LibraryReading reading = m_library.ReadText(text, place);
    for (const Finding& finding : reading.examination.findings) {
        const Effect effect = KindOf(finding.code).effect;
        if (effect == Effect::Lost || effect == Effect::NoneRead) {
            m_entryProblems.push_back("in its own library entries, line " + std::to_string(finding.line) + ": " +
                                      finding.text);
        }
    }
    luk::illustration::AssociativeObjectCollection::Merge merge(*SymbolTemplateCollection::GetCollection());
    for (const auto& category : reading.examination.categories) {
        merge.PutCategory(category);
    }
    for (const auto& entry : reading.examination.templates) {
        if (const auto item = du::DynamicCast<lusymbols::PartslibraryItem>(entry)) {
            // Its file is the one that the document holds, wherever the library has its own.
            const std::string file = FileNameOf(*item);
            SetFilePath(*item, file.empty() ? file : GetPictureFolder() + "/" + file);
            DropFolderThumbnail(*item);
        }
        merge.PutObject(entry);
    }
    merge.Commit();
    SymbolTemplateCollection::GetCollection()->SetInformation(
        reading.examination.loader ? reading.examination.loader->GetCollectionInformation() : nullptr);
}

void DocumentSource::Attach()
{
    m_lost = FindLostAttachments(*m_document);
    {
        const InterruptHold hold;
        m_document->AttachAnnotations();
    }
    WaitForLoads();
}

ExitCode DocumentSource::OpenWhole(const std::string& name)
{
    const ExitCode opened = Open(name);
    if (opened != ExitCode::Done) {
        return opened;
    }
    Attach();
    for (const std::string& problem : ProblemsOf(*this)) {
        m_progress.Tell(Printable(name) + ": warning: " + Printable(problem) + "\n");
    }
    TellLost(m_lost, name, m_progress);
    return ExitCode::Done;
}

void DocumentSource::WaitForLoads()
{
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    if (!loader) {
        return;
    }
    const std::size_t total = loader->GetPendingCount();
    loader->WaitForLoads([&](std::size_t pending) {
        m_progress.Step("loading pictures", total - std::min(pending, total), total);
        return true;
    });
}

std::string DocumentSource::GetPictureFolder() const { return m_library.GetTemporaryFolder() + "/Symbols"; }

std::vector<LibraryPlace> DocumentSource::GetLibraryPlaces() const
{
    std::vector<LibraryPlace> places;
    for (const std::string& name : m_options.libraries) {
        places.push_back(FindLibraryPlace(name, m_options.library));
    }
    if (AreLibrariesChosen()) {
        return places;
    }
    for (const RecordedLibrary& recorded : m_recorded) {
        LibraryOptions options = m_options.library;
        options.root = options.root.empty() ? recorded.root : options.root;
        options.messages = options.messages.empty() ? recorded.messages : options.messages;
        places.push_back(FindLibraryPlace(recorded.path, options));
    }
    return places;
}

void DocumentSource::RecordLibrary(const LibraryPlace& place)
{
    const LibraryPlace usual = FindLibraryPlace(place.path, {});
    RecordedLibrary library;
    library.path = place.path;
    library.root = place.root == usual.root ? std::string() : place.root;
    library.messages =
        place.messageFile == usual.messageFile ? std::string() : fs::absolute(place.messageFile).string();
    const auto known = std::ranges::find(m_recorded, library.path, &RecordedLibrary::path);
    if (known == m_recorded.end()) {
        m_recorded.push_back(std::move(library));
    } else {
        *known = std::move(library);
    }
}

bool DocumentSource::RecordOnly(const std::vector<LibraryPlace>& places)
{
    const std::vector<RecordedLibrary> before = std::exchange(m_recorded, {});
    for (const LibraryPlace& place : places) {
        RecordLibrary(place);
    }
    return m_recorded != before;
}

std::string DocumentSource::EntriesAsText(std::string& error)
{
    const SymbolTemplateCollection& collection = *SymbolTemplateCollection::GetCollection();
    LibraryContent content;
    content.information = collection.GetInformation();
    std::unordered_set<std::string> categories;
    for (const std::string& id : m_document->GetUsedTemplateIds()) {
        const auto entry = du::DynamicCast<luk::illustration::SymbolTemplate>(collection.GetAssociativeObjectById(id));
        if (!entry) {
            continue;
        }
        content.templates.push_back(entry);
        const auto category = collection.FindCategoryById(entry->GetCategoryId());
        if (category && categories.insert(category->GetId()).second) {
            content.categories.push_back(category);
        }
    }
    std::string text;
    if (content.templates.empty() && m_recorded.empty()) {
        return text;
    }
    const TemporaryFolder folder;
    if (folder.GetPath().empty()) {
        error = folder.GetError();
        return text;
    }
    // As the delivered library is written: texts and no keys, since the messages stay behind.
    if (WriteLibraryFile(std::move(content), true, folder.GetFilePath(), error)) {
        ReadFileText(folder.GetFilePath(), text, error);
    }
    return text;
}

bool DocumentSource::WriteOwnEntries(const std::string& documentFolder, std::string& error)
{
    const std::string text = EntriesAsText(error);
    if (error.empty()) {
        m_document->SetLibraryText(RecordLibraries(text, m_recorded, documentFolder));
    }
    return error.empty();
}

ExitCode DocumentSource::Save(const std::string& chosen)
{
    const std::string& output = chosen.empty() ? m_name : chosen;
    m_progress.Step("writing " + output);
    OutputFile file(output);
    const bool isInPlace = m_claim && (output == m_name || OutputFile::IsFile(output, m_name));
    std::string error;
    if (!file.GetPathToFill().empty()) {
        // What goes to standard output is taken to stay where the document is.
        const std::string target = OutputFile::IsStandardOutput(output) && !m_name.empty() ? m_name : output;
        // The package is written beside the file that is to be filled, under a name that nobody else knows.
        const InterruptHold hold;
        if (WriteOwnEntries(FolderOf(target), error)) {
            m_document->Save(file.GetPathToFill(), error);
        }
        if (error.empty() && isInPlace && !m_claim->Take()) {
            error = "another program has changed it meanwhile. Run the command again";
        }
    }
    m_progress.Clear();
    if (!error.empty()) {
        error = Printable(output) + ": cannot be written: " + Printable(error);
    } else if (!file.Commit()) {
        error = file.GetError();
    }
    if (!error.empty()) {
        m_progress.Tell("lusym: " + error + "\n");
        return ExitCode::OutputNotWritable;
    }
    if (isInPlace) {
        m_claim = std::make_unique<FileClaim>(m_name);
    }
    return ExitCode::Done;
}

ExitCode WorkOnDocument(const DocumentOptions& options, const std::string& name, Progress& progress,
                        const std::function<ExitCode(DocumentSource&)>& work)
{
    DocumentSource source(options, progress);
    if (!source.IsUsable()) {
        return source.GetFault();
    }
    const ExitCode opened = source.OpenWhole(name);
    return opened == ExitCode::Done ? work(source) : opened;
}

void AddDocumentLibraryOptions(CLI::App& verb, DocumentOptions& options, bool isNew)
{
    const std::string remark = isNew ? "" : " (default: those that the document records)";
    CLI::Option* const library =
        verb.add_option("--library", options.libraries, "The library; may be repeated" + remark);
    library->allow_extra_args(false)->type_name("LIB.xml");
    RefuseEmpty(*library);
    verb.add_option("--root", options.library.root,
                    "Base folder of the library's relative urls (default: the folder that holds the SymbolsLibrary "
                    "folder in which LIB.xml lies, else LIB.xml's own folder)")
        ->type_name("DIR");
    verb.add_option("--messages", options.library.messages,
                    "Texts that are named by key (default: messages.xml in the root or beside it)")
        ->type_name("FILE");
    verb.add_option("--lang", options.library.language, "Language of those texts (default: the user's)")
        ->type_name("CODE");
}

void AddDocumentOutputOption(CLI::App& verb, std::string& output)
{
    CLI::Option* const option = verb.add_option(
        "-o,--output", output, "Write to this file and leave DOC as it is; - for standard output (default: DOC)");
    option->type_name("OUT.luz");
    RefuseEmpty(*option);
}

void AddDocumentArgument(CLI::App& verb, std::string& name)
{
    verb.add_option("DOC", name, "The document")->required()->type_name("");
}

} // namespace lusym
