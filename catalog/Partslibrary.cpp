#include "catalog/Partslibrary.h"

#include "catalog/FileNames.h"
#include "catalog/LibraryLayout.h"
#include "catalog/LibraryRoots.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"

#include <du/FileSpec.h>
#include <du/FileSystem.h>
#include <du/UuidGen.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/Preferences.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>

#include <cstdio>
#include <string_view>

namespace lusymbols
{

namespace
{

using luk::illustration::SymbolTemplateCollection;

constexpr std::string_view kEmbeddedFolder = "Symbols";

std::string AppendFolder(std::string path, std::string_view folder)
{
    path.append(folder).push_back(du::FileSpec::DIR_SEP_CHAR);
    return path;
}

template <class Item>
du::SmartPtr<Item> FindItem(const std::string& id)
{
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    return collection ? du::DynamicCast<Item>(collection->GetAssociativeObjectById(id)) : nullptr;
}

std::string TargetFileName(const std::string& sourceFile, bool useUuidName)
{
    const du::FileSpec source(sourceFile);
    if (!useUuidName) {
        return source.GetFile();
    }
    std::string name;
    du::UuidGen::GetUuidString(name);
    return name + du::FileSpec::EXT_SEP_CHAR + source.GetFileExtension();
}

} // namespace

std::string Partslibrary::GetLibraryPath()
{
    const du::SmartPtr<luk::World> world = luk::World::GetWorld();
    du::SmartPtr<luk::Preferences> preferences;
    if (world) {
        world->GetIllustrationPreferences(preferences);
    }
    // A folder that nobody has set is not the root of the file system.
    if (!preferences || preferences->GetBaseURL().IsNull()) {
        return std::string();
    }
    du::FileSpec base;
    base.SetLocation(preferences->GetBaseURL().GetText());
    return AppendFolder(base.GetFileSpec() + du::FileSpec::DIR_SEP_CHAR, format::kLibraryFolder);
}

std::string Partslibrary::GetImagePath() { return AppendFolder(GetLibraryPath(), format::kImageFolder); }

std::string Partslibrary::GetOlPath() { return AppendFolder(GetLibraryPath(), format::kShapeFolder); }

std::string Partslibrary::GetStandardFolderPath() { return AppendFolder(GetLibraryPath(), format::kStandardFolder); }

std::string Partslibrary::GetStandardSymbolPath(bool is2D)
{
    return AppendFolder(GetStandardFolderPath(), is2D ? format::kImageFolder : format::kShapeFolder);
}

void Partslibrary::CreateLibraryFolderIfNedded()
{
    if (!du::FileSystem::DirExists(GetLibraryPath())) {
        du::FileSystem::Mkdir(GetLibraryPath());
        du::FileSystem::Mkdir(GetImagePath());
        du::FileSystem::Mkdir(GetOlPath());
    }
}

void Partslibrary::CreateStandardFolderIfNedded()
{
    if (!du::FileSystem::DirExists(GetStandardFolderPath())) {
        du::FileSystem::Mkdir(GetStandardFolderPath());
        du::FileSystem::Mkdir(GetStandardSymbolPath(true));
        du::FileSystem::Mkdir(GetStandardSymbolPath(false));
    }
}

bool Partslibrary::GetTargetFilePath(const std::string& sourceFile, std::string& targetFile, std::string& tempDir,
                                     bool useUuidName)
{
    const du::SmartPtr<lukapp::illustration::DrellinApp> application =
        lukapp::illustration::DrellinApp::GetDrellinApp();
    du::Symbol temporary;
    if (!application || !application->GetTemporaryDirectory(temporary)) {
        std::fputs("GetTemp dir failed\n", stdout);
        return false;
    }
    // The source may be one of the outputs, so its name is taken before either of them changes.
    const std::string fileName = TargetFileName(sourceFile, useUuidName);
    tempDir = temporary.GetText();
    du::FileSpec target;
    target.SetLocation(tempDir);
    target.DirPushBack(std::string(kEmbeddedFolder));
    target.SetFile(fileName);
    targetFile = target.GetFileSpec();
    return true;
}

bool Partslibrary::EmbedSymbol(const du::Symbol& sourceFile, du::Symbol& targetFile, bool useUuidName)
{
    // The text outlives its symbol, so source and target may be the same variable.
    const std::string& source = sourceFile.GetText();
    std::string target;
    std::string tempDir;
    const bool hasTarget = GetTargetFilePath(source, target, tempDir, useUuidName);
    targetFile = du::Symbol(target);
    if (!hasTarget || du::FileSpec(source).GetFile().empty() || !IsPlainFileName(du::FileSpec(target).GetFile())) {
        return false;
    }
    const std::string folder = tempDir + du::FileSpec::DIR_SEP_CHAR + std::string(kEmbeddedFolder);
    if (!du::FileSystem::DirExists(folder) && du::FileSystem::Mkdir(folder) != 0) {
        return false;
    }
    if (!du::FileSystem::FileExists(target)) {
        du::FileSystem::CopyFile(source, target);
    }
    return true;
}

void Partslibrary::CheckRelativeUrlAndConcatIfNeeded(std::string& url)
{
    const std::string relative = url;
    LibraryRoots::FromHost().Resolve(relative, url);
}

void Partslibrary::replaceAll(std::string& text, char from, char to)
{
    // Mostly there is nothing to replace, and looking for it is the quick part.
    for (std::size_t found = text.find(from); found != std::string::npos; found = text.find(from, found + 1)) {
        text[found] = to;
    }
}

du::SmartPtr<PartslibraryCategoryItem> Partslibrary::GetCategoryFromCollectionById(const std::string& id)
{
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    return collection ? du::DynamicCast<PartslibraryCategoryItem>(collection->FindCategoryById(id)) : nullptr;
}

du::SmartPtr<PartslibraryCategoryItem> Partslibrary::GetCategoryFromCollectionByName(const std::string& name)
{
    const du::SmartPtr<SymbolTemplateCollection>& collection = SymbolTemplateCollection::GetCollection();
    return collection ? du::DynamicCast<PartslibraryCategoryItem>(collection->FindCategoryByName(name)) : nullptr;
}

du::SmartPtr<PartslibraryImageItem> Partslibrary::GetImageFromCollection(const std::string& id)
{
    return FindItem<PartslibraryImageItem>(id);
}

du::SmartPtr<PartslibraryOlItem> Partslibrary::GetOlFromCollection(const std::string& id)
{
    return FindItem<PartslibraryOlItem>(id);
}

du::SmartPtr<PartslibraryItem> Partslibrary::GetItemFromCollection(const std::string& id)
{
    return FindItem<PartslibraryItem>(id);
}

bool Partslibrary::GetItemSequencerTagsByID(const std::string& id,
                                            std::vector<du::SmartPtr<luk::illustration::SequencerTag>>& tags)
{
    const du::SmartPtr<PartslibraryItem> item = GetItemFromCollection(id);
    if (!item) {
        return false;
    }
    item->GetSequencerTags(tags);
    return true;
}

} // namespace lusymbols
