// The saved content of one annotation, as XML. Whatever it holds, an annotation of each class reads it, stands in a scene,
// and saves what a second one reads and saves as the same.
#include "Fuzzing.h"
#include "FuzzWorkplace.h"

#include <dg/XmlElem.h>
#include <luk/Annotation.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/SerializedContentElement.h>
#include <luk/SerializedContentXml.h>
#include <luk/ShapeScene.h>
#include <luloader/Loader.h>

namespace
{

using Element = luk::SerializedContentElement;

std::string ToText(const Element& element)
{
    std::string text;
    fuzz::Require(luk::SerializedContentXml::Append(text, element, 0), "what an annotation saves can be written");
    return text;
}

Element ToElement(const std::string& text, bool& isRead)
{
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> root(dg::ParseXml(text, false, nullptr));
    isRead = root != nullptr;
    return isRead ? luk::SerializedContentXml::Read(*root, [](const std::string&) {}) : Element();
}

/// @return empty for an annotation without content, which saves nothing
std::string SavedBy(luk::Annotation& annotation)
{
    Element parent;
    annotation.Visit(parent);
    fuzz::Require(parent.GetChildCount() <= 1, "an annotation saves itself as one element");
    return parent.GetChildCount() == 1 ? ToText(parent.GetChild(0)) : std::string();
}

/// Reads the content into a new annotation of the class. @return what that saves; empty when it refuses
std::string TryOn(const char* classWord, const Element& content, luhost::Document& document)
{
    const auto annotation =
        du::DynamicCast<luk::Annotation>(fuzz::FuzzWorkplace::CreateComponent("create", "annotation", classWord));
    if (!annotation->InitializeFromSerializedContent(&content)) {
        return {};
    }
    std::string alone = SavedBy(*annotation);
    if (document.AddAnnotation(annotation, document.GetScene())) {
        luloader::Loader::GetLoader()->WaitForLoads();
        SavedBy(*annotation);
        document.RemoveAnnotation(annotation);
    }
    return alone;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    bool isRead = false;
    const Element content = ToElement(std::string(fuzz::AsText(data, size)), isRead);
    if (!isRead) {
        return 0;
    }
    const fuzz::FuzzWorkplace workplace;
    const std::unique_ptr<luhost::Document> document = luhost::Document::Create(workplace.MakeSetup());
    for (const char* const classWord : {"symbol2d", "symbol3d", "symbol3dflattened"}) {
        const std::string saved = TryOn(classWord, content, *document);
        if (!saved.empty()) {
            const Element again = ToElement(saved, isRead);
            fuzz::Require(isRead, "what an annotation saves can be read");
            fuzz::RequireSame(TryOn(classWord, again, *document), saved, "saved again it is the same");
        }
    }
    return 0;
}
