#include "FileProbe.h"

#include "DocumentSource.h"

#include <luk/Image.h>
#include <luk/Shape.h>
#include <luk/ShapeSource.h>
#include <luloader/Loader.h>

namespace lusym
{

std::unordered_map<std::string, PictureFacts> ProbePictures(const std::vector<std::string>& paths,
                                                            DocumentSource& source)
{
    std::unordered_map<std::string, PictureFacts> facts;
    std::unordered_map<std::string, du::SmartPtr<luk::Image>> images;
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    for (const std::string& path : paths) {
        const auto [place, isNew] = images.try_emplace(path);
        if (isNew && loader) {
            const InterruptHold hold;
            place->second = du::MakeCounted<luk::Image>();
            place->second->SetURL(du::Symbol("file:///" + path));
            loader->LoadImage(place->second, nullptr, du::Symbol());
        }
    }
    source.WaitForLoads();
    for (const auto& [path, image] : images) {
        PictureFacts& fact = facts[path];
        const du::SmartPtr<luk::ImageData> data = image ? image->GetImageData() : nullptr;
        if (data) {
            fact = {data->GetWidth(), data->GetHeight(), bool(data->GetVectorSource()), {}};
        } else {
            fact.problem = image && !image->GetProblem().empty() ? image->GetProblem() : "it cannot be read";
        }
    }
    return facts;
}

std::unordered_map<std::string, std::string> ProbeShapes(const std::vector<std::string>& paths, DocumentSource& source)
{
    std::unordered_map<std::string, std::string> problems;
    std::unordered_map<std::string, du::SmartPtr<luk::Shape>> shapes;
    const du::SmartPtr<luloader::Loader> loader = luloader::Loader::GetLoader();
    for (const std::string& path : paths) {
        const auto [place, isNew] = shapes.try_emplace(path);
        if (isNew && loader) {
            const InterruptHold hold;
            du::SmartPtr<luk::ShapeSource> file;
            luk::ShapeSource::Create(file, "file:///" + path, dg::FBox::EMPTY, 0);
            place->second = luk::Shape::Get(file);
            loader->LoadShape(place->second, 0, nullptr, nullptr);
        }
    }
    source.WaitForLoads();
    for (const auto& [path, shape] : shapes) {
        const bool isLoaded = shape && shape->IsLoaded();
        problems[path] = isLoaded                                ? std::string()
                         : shape && !shape->GetProblem().empty() ? shape->GetProblem()
                                                                 : "it cannot be read";
    }
    return problems;
}

} // namespace lusym
