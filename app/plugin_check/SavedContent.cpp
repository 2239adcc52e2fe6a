#include "SavedContent.h"

#include <luk/Instance.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <array>
#include <limits>

namespace lusym::check
{

namespace
{

using luk::SerializedContentElement;
using Value = SerializedContentElement::Value;
using Text = du::Symbol;

constexpr const char* kTypeNames[] = {"symbol", "bool",   "int32",      "float", "uint64",
                                      "point",  "vector", "quaternion", "color", "location"};

const dg::Location kTurned(dg::FMat33(0, -1, 0, 1, 0, 0, 0, 0, 1), {1.5, -2.5, 1.0e6});

std::vector<KeyRow> Joined(const std::vector<KeyRow>& first, std::vector<KeyRow> then)
{
    then.insert(then.begin(), first.begin(), first.end());
    return then;
}

const std::vector<KeyRow>& AnnotationKeys()
{
    static const std::vector<KeyRow> s_rows = {
        {"annoId", Text("anno-1")}, {"annoName", Text("a name")}, {"annoVisible", true}};
    return s_rows;
}

const std::vector<KeyRow>& PictureKeys()
{
    static const std::vector<KeyRow> s_rows =
        Joined(AnnotationKeys(), {
                                     {"title", Text("Hot surface")},
                                     {"description", Text("Let it cool down")},
                                     {"showTooltipTitle", true},
                                     {"showTooltipDescription", true},
                                     {"imageName", Text("hot")},
                                     {"imageFileName", Text("one.pic")},
                                     {"center", dg::DPoint3D(12.5, -3.25, 0.0)},
                                     {"width", 20.5F},
                                     {"height", 10.25F},
                                     {"lineColor", dg::Color(0.25F, 0.5F, 0.75F, 1.0F)},
                                     {"lineWidth", std::int32_t{3}},
                                     {"lineStipple", std::int32_t{2}},
                                     {"fillColor", dg::Color(1.0F, 0.5F, 0.25F, 0.5F)},
                                     {"transparency", 0.125F},
                                     {"screenSpace", true},
                                     {"anchor", std::int32_t{4}},
                                     {"reverse", true},
                                     {"flipHorizontally", true},
                                     {"rotateRight", std::int32_t{90}},
                                     {"rotateLeft", std::int32_t{-180}},
                                     {"isbillboard", true},
                                     {"pageNum", std::int32_t{2}},
                                 });
    return s_rows;
}

const std::vector<KeyRow>& ShapeKeys()
{
    static const std::vector<KeyRow> s_rows =
        Joined(CommonShapeKeys(), {
                                      {"appAmbient", dg::Color(0.25F, 0.0F, 0.0F, 1.0F)},
                                      {"appSpecular", dg::Color(0.0F, 0.25F, 0.0F, 1.0F)},
                                      {"appDiffuse", dg::Color(0.0F, 0.0F, 0.25F, 1.0F)},
                                      {"appEmissive", dg::Color(0.5F, 0.5F, 0.0F, 1.0F)},
                                      {"appShininess", 16.0F},
                                      {"appTransp", 0.25F},
                                      {"appHasOverride", true},
                                      {"locPosition", dg::DPoint3D(1.0, 2.0, 3.0)},
                                      {"locOrientation", dg::Quaternion<float>(0.0F, 0.0F, 1.0F, 0.0F)},
                                      {"locScale", 2.5F},
                                      {"isAnnotationSymbol", true},
                                      {"symbolCsysLocation", kTurned},
                                      {"symbolInitLocation", kTurned},
                                  });
    return s_rows;
}

const std::vector<KeyRow>& FlattenedShapeKeys()
{
    static const std::vector<KeyRow> s_rows =
        Joined(CommonShapeKeys(), {{"xform", dg::Location(kTurned.GetMat(), dg::DPoint3D::BAD)}});
    return s_rows;
}

void AddRows(SerializedContentElement& element, const std::vector<KeyRow>& rows)
{
    for (const KeyRow& row : rows) {
        element.AddProperty({Text(row.key), row.sample});
    }
}

/// Values from the ends of a type.
class Extremes
{
public:
    explicit Extremes(std::mt19937_64& random) : m_random(random) {}

    void operator()(du::Symbol& value)
    {
        value = Text(Pick(std::array<std::string, 6>{"x", std::string(5000, 'y'), "<&\"'>", "tab\tline\nend\r",
                                                     "\x01\x1F", "\xFF\xFE\xC0\x80"}));
    }
    void operator()(bool& value) { value = m_random() % 2 == 0; }
    void operator()(std::int32_t& value) { value = Number<std::int32_t>(); }
    void operator()(std::uint64_t& value) { value = Number<std::uint64_t>(); }
    void operator()(float& value) { value = Number<float>(); }
    void operator()(dg::DPoint3D& value) { value = {Number<double>(), Number<double>(), Number<double>()}; }
    void operator()(dg::DVec3& value) { value = {Number<double>(), Number<double>(), Number<double>()}; }
    void operator()(dg::Quaternion<float>& value)
    {
        value = {Number<float>(), Number<float>(), Number<float>(), Number<float>()};
    }
    void operator()(dg::Color& value) { value = {Number<float>(), Number<float>(), Number<float>(), Number<float>()}; }
    void operator()(dg::Location& value)
    {
        std::array<float, 9> entries{};
        std::ranges::generate(entries, [this] { return Number<float>(); });
        dg::DPoint3D position;
        (*this)(position);
        value = {dg::FMat33(entries), position};
    }

private:
    template <class T>
    T Number()
    {
        using Limits = std::numeric_limits<T>;
        if constexpr (Limits::has_quiet_NaN) {
            return Pick(std::array<T, 10>{Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(),
                                          Limits::lowest(), Limits::min(), Limits::denorm_min(), T(-0.0), T(0.1),
                                          Limits::epsilon()});
        } else {
            return Pick(std::array<T, 5>{Limits::max(), Limits::min(), T(0), T(1), T(90)});
        }
    }

    template <class T, std::size_t N>
    T Pick(const std::array<T, N>& values)
    {
        return values[m_random() % N];
    }

    std::mt19937_64& m_random;
};

/// Keys whose values say what the others mean, where files are, or what follows from where parts are.
bool IsFixed(std::string_view key)
{
    constexpr std::string_view kFixed[] = {"imageFileName",
                                           "fileName",
                                           "ID",
                                           "isAnnotationSymbol",
                                           "isbillboard",
                                           "attachedToPartId",
                                           "attachedToAssemblyPartId",
                                           "attachedToPartLastPos",
                                           "attachedToPartOffset"};
    return std::ranges::find(kFixed, key) != std::end(kFixed);
}

void MakeExtreme(SerializedContentElement& element, Extremes& extremes)
{
    for (SerializedContentElement::Property& property : element.GetProperties()) {
        if (!IsFixed(property.key.GetText())) {
            std::visit(extremes, property.value);
        }
    }
    for (std::size_t i = 0; i < element.GetChildCount(); ++i) {
        MakeExtreme(element.GetChild(i), extremes);
    }
}

std::string TextOf(const SerializedContentElement::Property& property)
{
    std::string text = property.key.GetText() + " (" + TypeNameOf(property.value) + ") ";
    if (const auto* const symbol = std::get_if<du::Symbol>(&property.value)) {
        return text + (symbol->IsNull() ? "null" : "\"" + symbol->GetText().substr(0, 40) + "\"");
    }
    luk::SerializedContentXml::AppendValue(text, property.value);
    return text;
}

bool Same(const SerializedContentElement::Property& a, const SerializedContentElement::Property& b)
{
    SerializedContentElement first;
    SerializedContentElement second;
    first.AddProperty(a);
    second.AddProperty(b);
    return first == second;
}

} // namespace

const std::vector<KeyRow>& CommonShapeKeys()
{
    static const std::vector<KeyRow> s_rows =
        Joined(AnnotationKeys(), {
                                     {"title", Text("Bolt")},
                                     {"description", Text("M8")},
                                     {"showTooltipTitle", true},
                                     {"showTooltipDescription", true},
                                     {"name", Text("bolt")},
                                     {"fileName", Text("one.shp")},
                                     {"ID", Text(luk::Instance::s_content_symbolPrefix.GetText() + "7")},
                                 });
    return s_rows;
}

const std::vector<KeyRow>& AttachedPartKeys()
{
    static const std::vector<KeyRow> s_rows = {
        {"attachedToPartId", Text("/a/x")},
        {"attachedToAssemblyPartId", Text("/a")},
        {"attachedToPartLastPos", dg::DPoint3D()},
        {"attachedToPartOffset", dg::DVec3(1.0, 2.0, 3.0)},
    };
    return s_rows;
}

const std::vector<KeyRow>& SequencerTagKeys()
{
    static const std::vector<KeyRow> s_rows = {
        {"sequencerTagType", Text("TORQUE")},   {"sequencerTagDescription", Text("how tight")},
        {"sequencerTagName", Text("bolt")},     {"sequencerTagUnits", Text("Nm")},
        {"sequencerTagQuantity", Text("25.4")},
    };
    return s_rows;
}

const std::vector<KeyRow>& KeysOf(const std::string& type)
{
    return type == "symbol2d" ? PictureKeys() : type == "symbol3d" ? ShapeKeys() : FlattenedShapeKeys();
}

SerializedContentElement SampleContent(const std::string& type)
{
    SerializedContentElement content{Text(type)};
    AddRows(content, KeysOf(type));
    if (type == "symbol3d") {
        AddRows(content.StartChild(Text("attachedToPart")), AttachedPartKeys());
        SerializedContentElement second{Text("attachedToPart")};
        AddRows(second, AttachedPartKeys());
        second = Without(second, "attachedToAssemblyPartId");
        FindProperty(second, "attachedToPartId")->value = Text("/b");
        content.AddChild(std::move(second));
    }
    for (int i = 0; i < 2 && type != "symbol3dflattened"; ++i) {
        AddRows(content.StartChild(Text("sequencerTag")), SequencerTagKeys());
    }
    return content;
}

SerializedContentElement ExtremeContent(const std::string& type, std::mt19937_64& random)
{
    SerializedContentElement content = SampleContent(type);
    Extremes extremes(random);
    MakeExtreme(content, extremes);
    return content;
}

const char* TypeNameOf(const Value& value) { return kTypeNames[value.index()]; }

std::string FirstDifference(const SerializedContentElement& a, const SerializedContentElement& b)
{
    if (!(a.GetName() == b.GetName())) {
        return "the element \"" + a.GetName().GetText() + "\" is \"" + b.GetName().GetText() + "\"";
    }
    const auto& ofA = a.GetProperties();
    const auto& ofB = b.GetProperties();
    for (std::size_t i = 0; i < std::max(ofA.size(), ofB.size()); ++i) {
        if (i >= ofA.size() || i >= ofB.size() || !Same(ofA[i], ofB[i])) {
            return (i < ofA.size() ? TextOf(ofA[i]) : "nothing") + " becomes " +
                   (i < ofB.size() ? TextOf(ofB[i]) : "nothing");
        }
    }
    if (a.GetChildCount() != b.GetChildCount()) {
        return std::to_string(a.GetChildCount()) + " child elements become " + std::to_string(b.GetChildCount());
    }
    for (std::size_t i = 0; i < a.GetChildCount(); ++i) {
        if (std::string difference = FirstDifference(a.GetChild(i), b.GetChild(i)); !difference.empty()) {
            return "in the child " + std::to_string(i + 1) + " " + difference;
        }
    }
    return {};
}

SerializedContentElement::Property* FindProperty(SerializedContentElement& element, std::string_view key)
{
    auto& properties = element.GetProperties();
    const auto found = std::ranges::find_if(
        properties, [&](const SerializedContentElement::Property& property) { return property.key.GetText() == key; });
    return found == properties.end() ? nullptr : &*found;
}

const SerializedContentElement::Property* FindProperty(const SerializedContentElement& element, std::string_view key)
{
    return FindProperty(const_cast<SerializedContentElement&>(element), key);
}

SerializedContentElement Without(const SerializedContentElement& element, std::string_view key)
{
    SerializedContentElement rest = element;
    std::erase_if(rest.GetProperties(),
                  [&](const SerializedContentElement::Property& property) { return property.key.GetText() == key; });
    return rest;
}

} // namespace lusym::check
