#include "annotations2d/Symbol2D.h"

#include <dg/DBox2D.h>
#include <dg/Pipeline.h>
#include <dp/LUTracer.h>
#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luannotations/ConstStrings.h>
#include <lucontext/Context2D.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/SerializedContentElement.h>
#include <lumk/Stamp.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <set>

namespace luannotations
{

namespace
{

using luk::illustration::SequencerTag;

constexpr dp::TraceChannel kChannel{"symbol3d", "symbol2d"};

/// Passed to whoever measures the stamp; the box needs one resolution only and the number has no effect.
constexpr int kPixelBoxResolution = 24;

/// The words of a saved symbol, for writing and reading.
struct Keys {
    du::Symbol title{"title"};
    du::Symbol description{"description"};
    du::Symbol showTooltipTitle{"showTooltipTitle"};
    du::Symbol showTooltipDescription{"showTooltipDescription"};
    du::Symbol imageName{"imageName"};
    du::Symbol imageFileName{"imageFileName"};
    du::Symbol center{"center"};
    du::Symbol width{"width"};
    du::Symbol height{"height"};
    du::Symbol lineColor{"lineColor"};
    du::Symbol lineWidth{"lineWidth"};
    du::Symbol lineStipple{"lineStipple"};
    du::Symbol fillColor{"fillColor"};
    du::Symbol transparency{"transparency"};
    du::Symbol screenSpace{"screenSpace"};
    du::Symbol anchor{"anchor"};
    du::Symbol reverse{"reverse"};
    du::Symbol flipHorizontally{"flipHorizontally"};
    du::Symbol rotateRight{"rotateRight"};
    du::Symbol rotateLeft{"rotateLeft"};
    du::Symbol isBillboard3D{"isbillboard"};
    du::Symbol location{"bbXform"};
    du::Symbol pageNum{"pageNum"};
    du::Symbol templateIndex{"templateIndex"};

    du::Symbol sequencerTag{"sequencerTag"};
    du::Symbol tagType{"sequencerTagType"};
    du::Symbol tagDescription{"sequencerTagDescription"};
    du::Symbol tagName{"sequencerTagName"};
    du::Symbol tagUnits{"sequencerTagUnits"};
    du::Symbol tagQuantity{"sequencerTagQuantity"};

    static const Keys& Get()
    {
        static const Keys s_keys;
        return s_keys;
    }
};

template <class T>
struct Field {
    const du::Symbol& key;
    T Symbol2DInfo::*member;
};

/// Fills a record from saved content: own keys first, the rest goes to the base for the common content.
class SerializedContentVisitor : public luk::Annotation::SerializedContentVisitor
{
public:
    using Base = luk::Annotation::SerializedContentVisitor;
    using Info = Symbol2DInfo;

    explicit SerializedContentVisitor(luk::Annotation& annotation) : Base(annotation) {}

    const Symbol2DInfo& GetRecord() const { return m_record; }

    bool StartElement(const du::Symbol& name) override
    {
        if (!(name == m_keys.sequencerTag)) {
            return false;
        }
        m_tag = new SequencerTag;
        m_record.sequencerTags.push_back(m_tag);
        return true;
    }

    bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override
    {
        return Take<du::Symbol>(key, value,
                                {{m_keys.title, &Info::title},
                                 {m_keys.description, &Info::description},
                                 {m_keys.imageName, &Info::imageName},
                                 {m_keys.imageFileName, &Info::imageFileName}}) ||
               TakeTagType(key, value) || TakeTagText(key, value.GetText()) || Base::VisitSymbol(key, value) ||
               Refuse("symbol", key);
    }

    bool VisitColor(const du::Symbol& key, const dg::Color& value) override
    {
        return Take<dg::Color>(key, value,
                               {{m_keys.lineColor, &Info::lineColor}, {m_keys.fillColor, &Info::fillColor}}) ||
               Base::VisitColor(key, value) || Refuse("color", key);
    }

    bool VisitPoint(const du::Symbol& key, const dg::DPoint3D& value) override
    {
        return Take<dg::DPoint3D>(key, value, {{m_keys.center, &Info::center}}) || Base::VisitPoint(key, value) ||
               Refuse("point", key);
    }

    bool VisitLocation(const du::Symbol& key, const dg::Location& value) override
    {
        return Take<dg::Location>(key, value, {{m_keys.location, &Info::location}}) || Base::VisitLocation(key, value);
    }

    bool VisitInt32(const du::Symbol& key, std::int32_t value) override
    {
        return Take<std::int32_t>(key, value,
                                  {{m_keys.anchor, &Info::anchor},
                                   {m_keys.pageNum, &Info::pageNum},
                                   {m_keys.lineWidth, &Info::lineWidth},
                                   {m_keys.lineStipple, &Info::lineStipple},
                                   {m_keys.rotateRight, &Info::rotateRight},
                                   {m_keys.rotateLeft, &Info::rotateLeft}}) ||
               Base::VisitInt32(key, value) || Refuse("int32", key);
    }

    bool VisitFloat(const du::Symbol& key, float value) override
    {
        return Take<float>(key, value,
                           {{m_keys.transparency, &Info::transparency},
                            {m_keys.width, &Info::width},
                            {m_keys.height, &Info::height}}) ||
               Base::VisitFloat(key, value) || Refuse("float", key);
    }

    bool VisitUint64(const du::Symbol& key, std::uint64_t value) override
    {
        return Take<std::uint64_t>(key, value, {{m_keys.templateIndex, &Info::templateIndex}}) ||
               Base::VisitUint64(key, value);
    }

    bool VisitBool(const du::Symbol& key, bool value) override
    {
        return Take<bool>(key, value,
                          {{m_keys.screenSpace, &Info::screenSpace},
                           {m_keys.reverse, &Info::reverse},
                           {m_keys.flipHorizontally, &Info::flipHorizontally},
                           {m_keys.isBillboard3D, &Info::isBillboard3D},
                           {m_keys.showTooltipTitle, &Info::showTooltipTitle},
                           {m_keys.showTooltipDescription, &Info::showTooltipDescription}}) ||
               // Older content has the rotations as yes or no.
               Take<std::int32_t>(key, value ? 1 : 0,
                                  {{m_keys.rotateRight, &Info::rotateRight}, {m_keys.rotateLeft, &Info::rotateLeft}}) ||
               Base::VisitBool(key, value);
    }

private:
    template <class T>
    bool Take(const du::Symbol& key, const T& value, std::initializer_list<Field<T>> fields)
    {
        for (const Field<T>& field : fields) {
            if (key == field.key) {
                m_record.*field.member = value;
                return true;
            }
        }
        return false;
    }

    /// Outside a tag these keys are known and mean nothing.
    bool TakeTagType(const du::Symbol& key, const du::Symbol& value)
    {
        if (!(key == m_keys.tagType)) {
            return false;
        }
        if (m_tag) {
            m_tag->SetType(SequencerTag::GetTypeForSymbol(value));
        }
        return true;
    }

    bool TakeTagText(const du::Symbol& key, const std::string& text)
    {
        using Setter = void (SequencerTag::*)(const std::string&);
        const struct {
            const du::Symbol& key;
            Setter set;
        } setters[] = {{m_keys.tagDescription, &SequencerTag::SetDescription},
                       {m_keys.tagName, &SequencerTag::SetName},
                       {m_keys.tagUnits, &SequencerTag::SetUnits},
                       {m_keys.tagQuantity, &SequencerTag::SetQuantityString}};
        for (const auto& setter : setters) {
            if (key == setter.key) {
                if (m_tag) {
                    ((*m_tag).*setter.set)(text);
                }
                return true;
            }
        }
        return false;
    }

    /// For what nobody knows.
    static bool Refuse(const char* kind, const du::Symbol& key)
    {
        dp::LUTracer(kChannel).Trace(dp::LUTracer::WARNING, "Unhandle %s %s\n", kind, key.GetText().c_str());
        return false;
    }

    Symbol2DInfo m_record;
    du::SmartPtr<SequencerTag> m_tag;
    const Keys& m_keys = Keys::Get();
};

/// To the nearest integer, halves away from zero; what no integer can hold becomes the nearest one that can, NaN 0.
int RoundToInt(double value)
{
    using Limits = std::numeric_limits<int>;
    if (std::isnan(value)) {
        return 0;
    }
    const double rounded = value < 0.0 ? std::ceil(value - 0.5) : std::floor(value + 0.5);
    return static_cast<int>(std::clamp(rounded, double{Limits::min()}, double{Limits::max()}));
}

void WriteTag(luk::SerializedContentElement& element, const SequencerTag& tag)
{
    const Keys& keys = Keys::Get();
    element.AddProperty(keys.tagType, SequencerTag::GetSymbolForType(tag.GetType()));
    element.AddProperty(keys.tagDescription, du::Symbol(tag.GetDescription()));
    element.AddProperty(keys.tagName, du::Symbol(tag.GetName()));
    element.AddProperty(keys.tagUnits, du::Symbol(tag.GetUnits()));
    element.AddProperty(keys.tagQuantity, du::Symbol(tag.GetQuantityString()));
}

} // namespace

void Symbol2D::Visit(luk::SerializedContentElement& element)
{
    const dp::ReadLockGuard lock(GetLock());
    SerializeContent(element.StartChild(ConstStrings::luSymbol2D), nullptr, nullptr);
}

bool Symbol2D::Flatten(luk::SerializedContentElement& element, const FlattenMatrices&, const luk::InstanceCheck& check,
                       const dg::Pipeline& pipeline)
{
    const dp::ReadLockGuard lock(GetLock());
    SerializeContent(element.StartChild(ConstStrings::luSymbol2D), &check, &pipeline);
    return true;
}

void Symbol2D::SerializeContent(luk::SerializedContentElement& element, const luk::InstanceCheck*,
                                const dg::Pipeline* pipeline)
{
    luk::Annotation::Visit(element);
    const Keys& keys = Keys::Get();
    element.AddProperty(keys.title, m_info.title);
    element.AddProperty(keys.description, m_info.description);
    element.AddProperty(keys.showTooltipTitle, m_info.showTooltipTitle);
    element.AddProperty(keys.showTooltipDescription, m_info.showTooltipDescription);
    element.AddProperty(keys.imageName, m_info.imageName);
    element.AddProperty(keys.imageFileName, m_info.imageFileName);
    SerializeBox(element, pipeline);
    element.AddProperty(keys.lineColor, m_info.lineColor);
    element.AddProperty(keys.lineWidth, m_info.lineWidth);
    element.AddProperty(keys.lineStipple, m_info.lineStipple);
    element.AddProperty(keys.fillColor, m_info.fillColor);
    element.AddProperty(keys.transparency, m_info.transparency);
    element.AddProperty(keys.screenSpace, m_info.screenSpace);
    element.AddProperty(keys.anchor, m_info.anchor);
    element.AddProperty(keys.reverse, m_info.reverse);
    element.AddProperty(keys.flipHorizontally, m_info.flipHorizontally);
    element.AddProperty(keys.rotateRight, m_info.rotateRight);
    element.AddProperty(keys.rotateLeft, m_info.rotateLeft);
    element.AddProperty(keys.isBillboard3D, m_info.isBillboard3D);
    if (!m_info.isBillboard3D && m_markup && m_markup->GetLocation()) {
        element.AddProperty(keys.location, *m_markup->GetLocation());
    }
    element.AddProperty(keys.pageNum, m_info.pageNum);
    SerializeTemplate(element);
    for (const du::SmartPtr<SequencerTag>& tag : m_info.sequencerTags) {
        if (tag) {
            WriteTag(element.StartChild(keys.sequencerTag), *tag);
        }
    }
}

void Symbol2D::SerializeBox(luk::SerializedContentElement& element, const dg::Pipeline* pipeline) const
{
    dg::DPoint3D center = m_info.center;
    float width = m_info.width;
    float height = m_info.height;
    if (pipeline) {
        const int pixelsPerUnit = RoundToInt(pipeline->GetScale());
        const lucontext::Context2D context{pixelsPerUnit, pixelsPerUnit};
        const dg::DBox2D box = GetMarkupPixelBBox(*pipeline, context, kPixelBoxResolution);
        center = {box.GetCenter().x, box.GetCenter().y, 0.0};
        width = static_cast<float>(box.GetWidth() * 0.5);
        height = static_cast<float>(box.GetHeight() * 0.5);
    }
    element.AddProperty(Keys::Get().center, center);
    element.AddProperty(Keys::Get().width, width);
    element.AddProperty(Keys::Get().height, height);
}

void Symbol2D::SerializeTemplate(luk::SerializedContentElement& element) const
{
    const auto& collection = luk::illustration::SymbolTemplateCollection::GetCollection();
    if (!m_hasTemplate || !collection) {
        return;
    }
    const std::set<std::uint64_t> indices = collection->AssociativeObjectIdToIndices(m_info.templateId);
    if (!indices.empty()) {
        element.AddProperty(Keys::Get().templateIndex, *indices.begin());
    }
}

bool Symbol2D::InitializeFromSerializedContent(const luk::SerializedContentElement* element)
{
    if (!element) {
        return false;
    }
    const dp::WriteLockGuard lock(GetLock());
    luannotations::SerializedContentVisitor visitor(*this);
    element->Visit(visitor, true);
    SetSymbolInfo(visitor.GetRecord());
    SetCreatedFromFile(true);
    return true;
}

bool Symbol2D::InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                               du::SmartPtr<luk::AnnoIdPathMapper>)
{
    return InitializeFromSerializedContent(element);
}

} // namespace luannotations
