#include "Check.h"
#include "Locales.h"
#include "SavedContent.h"
#include "Stage.h"
#include "Trial.h"

#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <dg/Pipeline.h>
#include <dg/XmlElem.h>
#include <luk/Annotation.h>
#include <luk/InstanceCheck.h>
#include <luk/SerializedContentXml.h>
#include <luk/ShapeScene.h>

#include <algorithm>

namespace lusym::check
{

namespace
{

using Text = du::Symbol;
using Value = Element::Value;

/// "title", "width" and so on, for people.
std::string Named(const std::string& type) { return "an annotation of the type \"" + type + "\" "; }

std::string KeyText(std::string_view key, const Value& value)
{
    return std::string("\"").append(key).append("\" (").append(TypeNameOf(value)).append(")");
}

/// Whether an element has these keys, of these types, in this order.
void ExpectKeys(Trial& trial, const Element& element, const std::vector<KeyRow>& rows, const std::string& what)
{
    const auto& properties = element.GetProperties();
    for (std::size_t i = 0; i < std::max(properties.size(), rows.size()); ++i) {
        const std::string expected = i < rows.size() ? KeyText(rows[i].key, rows[i].sample) : "nothing";
        const std::string found =
            i < properties.size() ? KeyText(properties[i].key.GetText(), properties[i].value) : "nothing";
        std::string broken = what;
        broken.append("saves ").append(found).append(" at place ").append(std::to_string(i + 1));
        broken.append(" and not ").append(expected);
        if (!trial.Expect(expected == found, broken)) {
            return;
        }
    }
}

void ExpectChildren(Trial& trial, const Element& element, const std::vector<std::string>& names,
                    const std::string& what)
{
    std::vector<std::string> found;
    for (std::size_t i = 0; i < element.GetChildCount(); ++i) {
        found.push_back(element.GetChild(i).GetName().GetText());
    }
    trial.Expect(found == names, what + "saves other child elements than its parts and its tags, in their order");
}

void ExpectTags(Trial& trial, const Element& element, const std::string& what)
{
    for (std::size_t i = 0; i < element.GetChildCount(); ++i) {
        if (element.GetChild(i).GetName().GetText() == "sequencerTag") {
            ExpectKeys(trial, element.GetChild(i), SequencerTagKeys(), what + "in a tag ");
        }
    }
}

void CheckKeysOfPictures(Trial& trial)
{
    Stage stage(trial);
    const std::string what = Named("symbol2d");
    const Element saved = Stage::Save(stage.Place("symbol2d"));
    trial.Expect(saved.GetName().GetText() == "symbol2d", what + "saves no element of that name");
    ExpectKeys(trial, saved, KeysOf("symbol2d"), what);
    ExpectChildren(trial, saved, {"sequencerTag", "sequencerTag"}, what);
    ExpectTags(trial, saved, what);
}

void CheckKeysOfShapes(Trial& trial)
{
    Stage stage(trial);
    const std::string what = Named("symbol3d");
    const Element unplaced = Stage::Save(stage.Read("symbol3d", SampleContent("symbol3d")));
    trial.Expect(unplaced.GetName().IsNull(), what + "that has no shape in a scene saves something");

    const Element saved = Stage::Save(stage.Place("symbol3d"));
    trial.Expect(saved.GetName().GetText() == "symbol3d", what + "saves no element of that name");
    ExpectKeys(trial, saved, KeysOf("symbol3d"), what);
    ExpectChildren(trial, saved, {"attachedToPart", "attachedToPart", "sequencerTag", "sequencerTag"}, what);
    ExpectTags(trial, saved, what);
    if (saved.GetChildCount() > 1) {
        std::vector<KeyRow> rows = AttachedPartKeys();
        ExpectKeys(trial, saved.GetChild(0), rows, what + "in a part ");
        rows.erase(rows.begin() + 1);
        ExpectKeys(trial, saved.GetChild(1), rows, what + "in a part of no assembly ");
    }
}

void CheckKeysOfFlattenedShapes(Trial& trial)
{
    Stage stage(trial);
    const std::string what = Named("symbol3dflattened");
    const Element saved = Stage::Save(stage.Place("symbol3dflattened"));
    trial.Expect(saved.GetName().GetText() == "symbol3dflattened", what + "saves no element of that name");
    ExpectKeys(trial, saved, KeysOf("symbol3dflattened"), what);
    ExpectChildren(trial, saved, {}, what);
    const auto* const xform = FindProperty(saved, "xform");
    const auto* const location = xform ? std::get_if<dg::Location>(&xform->value) : nullptr;
    trial.Expect(location && !location->HasPosition(), what + "saves a matrix with a position");
}

void CheckConditionalKeys(Trial& trial)
{
    Stage stage(trial);
    stage.LoadLibrary("A title", "one");
    Element content = SampleContent("symbol2d");
    const std::string what = Named("symbol2d");
    trial.Expect(!FindProperty(Stage::Save(stage.Place("symbol2d", content)), "templateIndex"),
                 what + "that follows no entry saves the index of one");
    FindProperty(content, "isbillboard")->value = false;
    trial.Expect(!FindProperty(Stage::Save(stage.Read("symbol2d", content)), "bbXform"),
                 what + "saves a place of its own before it has a stamp");
    const Element turned = Stage::Save([&] {
        AnnotationPtr annotation = stage.Read("symbol2d", content);
        if (annotation) {
            annotation->AttachScene(stage.GetScene());
        }
        Stage::Pump();
        return annotation;
    }());
    trial.Expect(FindProperty(turned, "bbXform"),
                 what + "in space that does not face the viewer saves no place of its own");
    for (const char* const type : {"symbol2d", "symbol3d"}) {
        const Element bound = BoundContent(type);
        const Value index = bound.GetProperties().back().value;
        const Element saved = Stage::Save(stage.Place(type, bound));
        const auto* const found = FindProperty(saved, "templateIndex");
        trial.Expect(found && found == &saved.GetProperties().back() && found->value == index,
                     Named(type) + "that follows an entry does not save its index last");
    }
}

void CheckFlattened(Trial& trial)
{
    Stage stage(trial);
    const luk::Annotation::FlattenMatrices matrices;
    const dg::Pipeline pipeline;
    for (const char* const type : {"symbol2d", "symbol3d"}) {
        const AnnotationPtr unplaced = trial.MakeAnnotation(type);
        const AnnotationPtr annotation = stage.Place(type);
        if (!annotation || !unplaced) {
            return;
        }
        const bool isPicture = std::string(type) == "symbol2d";
        const std::string what = Named(type) + "in a flattened drawing ";
        Element nothing;
        Element parent;
        trial.Expect(unplaced->Flatten(nothing, matrices, {}, pipeline) == isPicture &&
                         (nothing.GetChildCount() == 1) == isPicture,
                     what + (isPicture ? "is gone when it is in no scene" : "is there without a shape"));
        if (!trial.Expect(annotation->Flatten(parent, matrices, {}, pipeline) && parent.GetChildCount() == 1,
                          what + "is gone")) {
            continue;
        }
        const Element& saved = parent.GetChild(0);
        trial.Expect(saved.GetName().GetText() == (isPicture ? "symbol2d" : "symbol3dflattened"),
                     what + "is an element \"" + saved.GetName().GetText() + "\"");
        ExpectKeys(trial, saved, isPicture ? KeysOf(type) : CommonShapeKeys(), what);
        const Element again = Stage::Save(stage.Place(saved.GetName().GetText(), saved));
        trial.Expect(!again.GetName().IsNull(), what + "cannot be read again");
    }
}

/// Reads, places, saves.
Element Again(Stage& stage, const std::string& type, const Element& content)
{
    const AnnotationPtr annotation = stage.Place(type, content);
    Element saved = Stage::Save(annotation);
    Stage::Remove(annotation);
    return saved;
}

/// Through the text of a document.
Element ThroughText(Trial& trial, const Element& element)
{
    std::string text;
    luk::SerializedContentXml::Append(text, element, 0);
    dg::XmlElem* const root = dg::ParseXml(text, false, nullptr);
    if (!root) {
        trial.Tell({Outcome::Fail, Side::Host, "saved content cannot be written as a text and read again"});
        return element;
    }
    Element read = luk::SerializedContentXml::Read(*root, {});
    dg::FreeXml(root);
    if (!(read == element)) {
        trial.Tell({Outcome::Fail, Side::Host, "the text of saved content says: " + FirstDifference(element, read)});
    }
    return read;
}

void ExpectSameAgain(Trial& trial, Stage& stage, const std::string& type, const Element& content)
{
    const Element first = Again(stage, type, content);
    const Element second = Again(stage, type, ThroughText(trial, first));
    trial.Expect(first == second, Named(type) + "saved, read and saved again: " + FirstDifference(first, second));
}

void CheckRoundTrip(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        ExpectSameAgain(trial, stage, type, SampleContent(type));
        for (int i = 0; i < 20; ++i) {
            const Element content = ExtremeContent(type, trial.Random());
            ExpectSameAgain(trial, stage, type, content);
            // Those that are nothing but their content keep it to the bit without a scene too.
            if (std::string(type) == "symbol2d") {
                const Element saved = Stage::Save(stage.Read(type, content));
                trial.Expect(saved == content, Named(type) + "read and saved: " + FirstDifference(content, saved));
            }
        }
    }
}

void CheckContentLocale(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const Element here = Again(stage, type, SampleContent(type));
        const CommaLocale elsewhere;
        const Element there = Again(stage, type, SampleContent(type));
        trial.Expect(here == there, Named(type) + "under another locale: " + FirstDifference(here, there));
    }
}

void CheckUnknownKept(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        Element content = SampleContent(type);
        for (const KeyRow& row :
             {KeyRow{"checkText", Text("x")}, KeyRow{"checkBool", true}, KeyRow{"checkInt", 7},
              KeyRow{"checkFloat", 0.5F}, KeyRow{"checkNumber", std::uint64_t{9}},
              KeyRow{"checkPoint", dg::DPoint3D(1, 2, 3)}, KeyRow{"checkVector", dg::DVec3(1, 2, 3)},
              KeyRow{"checkTurn", dg::Quaternion<float>()}, KeyRow{"checkColor", dg::Color()},
              KeyRow{"checkPlace", dg::Location::IDENTITY}}) {
            content.AddProperty({Text(row.key), row.sample});
        }
        content.StartChild(Text("checkChild")).AddProperty(Text("title"), Text("not the title"));
        const Element saved = Again(stage, type, content);
        for (const Element::Property& property : content.GetProperties()) {
            const std::string& key = property.key.GetText();
            const auto* const kept = FindProperty(saved, key);
            trial.Expect(!key.starts_with("check") || (kept && kept->value == property.value),
                         Named(type) + "loses a property that it does not know");
        }
        bool isChildKept = false;
        for (std::size_t i = 0; i < saved.GetChildCount(); ++i) {
            isChildKept |= saved.GetChild(i) == content.GetChild(content.GetChildCount() - 1);
        }
        trial.Expect(isChildKept, Named(type) + "loses a child element that it does not know");
    }
}

/// The content without what comes after so many properties and children, counted in the order in which they are read.
Element CutOff(const Element& content, std::size_t length)
{
    Element cut{content.GetName()};
    for (const Element::Property& property : content.GetProperties()) {
        if (length == 0) {
            return cut;
        }
        --length;
        cut.AddProperty(property);
    }
    for (std::size_t i = 0; i < content.GetChildCount() && length > 0; ++i) {
        const std::size_t size = content.GetChild(i).GetProperties().size() + 1;
        cut.AddChild(CutOff(content.GetChild(i), std::min(length, size) - 1));
        length -= std::min(length, size);
    }
    return cut;
}

void CheckTruncated(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const Element content = SampleContent(type);
        Element cut;
        for (std::size_t length = 0; !(cut == content); ++length) {
            cut = CutOff(content, length);
            const AnnotationPtr annotation = trial.MakeAnnotation(type);
            if (!annotation || !trial.Expect(annotation->InitializeFromSerializedContent(&cut),
                                             Named(type) + "refuses content that is cut off")) {
                return;
            }
            stage.Attach(annotation, type);
            Stage::Pump();
            const Element saved = Stage::Save(annotation);
            trial.Expect(saved.GetName().IsNull() || saved.GetProperties().size() >= CommonShapeKeys().size(),
                         Named(type) + "does not save all its keys after content that was cut off");
            Stage::Remove(annotation);
        }
    }
}

/// One value of every type.
const std::vector<Value>& ValuesOfAllTypes()
{
    static const std::vector<Value> s_values = {
        Text("word"),   true,        std::int32_t{1},         1.0F,        std::uint64_t{1},
        dg::DPoint3D(), dg::DVec3(), dg::Quaternion<float>(), dg::Color(), dg::Location()};
    return s_values;
}

void CheckWrongTypes(Trial& trial)
{
    Stage stage(trial);
    for (const char* const type : kAnnotationTypes) {
        const Element usual = Stage::Save(stage.Place(type));
        for (const KeyRow& row : KeysOf(type)) {
            for (const Value& value : ValuesOfAllTypes()) {
                Element content = SampleContent(type);
                FindProperty(content, row.key)->value = value;
                const AnnotationPtr annotation = trial.MakeAnnotation(type);
                if (!annotation || !trial.Expect(annotation->InitializeFromSerializedContent(&content),
                                                 Named(type) + "refuses content with \"" + row.key + "\" of the type " +
                                                     TypeNameOf(value))) {
                    continue;
                }
                const Element saved = Stage::Save(annotation);
                const auto* const found = FindProperty(saved, row.key);
                trial.Expect(saved.GetName().IsNull() || found,
                             Named(type) + "does not save \"" + row.key + "\" any more");
            }
        }
    }
}

void CheckOlderContent(Trial& trial)
{
    Stage stage(trial);
    Element content = SampleContent("symbol2d");
    FindProperty(content, "rotateRight")->value = true;
    FindProperty(content, "rotateLeft")->value = false;
    content.AddProperty(Text("sequencerTagName"), Text("of no tag"));
    const Element saved = Stage::Save(stage.Read("symbol2d", content));
    const auto* const right = FindProperty(saved, "rotateRight");
    const auto* const left = FindProperty(saved, "rotateLeft");
    trial.Expect(right && left && right->value == Value(std::int32_t{1}) && left->value == Value(std::int32_t{0}),
                 Named("symbol2d") + "does not read rotations that are yes or no as 1 and 0");
    trial.Expect(saved.GetChildCount() == 2, Named("symbol2d") + "takes the key of a tag outside a tag for a tag");
}

constexpr Check kContentChecks[] = {
    {"keys-symbol2d", "keys",
     "A picture symbol saves one element \"symbol2d\": what the host saves of every annotation, then its own keys, "
     "each with "
     "its type and in its order, then a \"sequencerTag\" for each of its tags.",
     CheckKeysOfPictures},
    {"keys-symbol3d", "keys",
     "A shape symbol saves one element \"symbol3d\" with its keys in their order, an \"attachedToPart\" for each part "
     "that it "
     "is attached to, the assembly only where there is one, and its tags. Without a shape in a scene it saves nothing.",
     CheckKeysOfShapes},
    {"keys-symbol3dflattened", "keys",
     "A flattened shape symbol saves one element \"symbol3dflattened\" with the common keys and its matrix, which "
     "carries no "
     "position.",
     CheckKeysOfFlattenedShapes},
    {"conditional-keys", "keys",
     "The index of a library entry is saved last, and only while the symbol follows one. A place of its own is saved "
     "by a "
     "picture symbol that does not face the viewer, once it has a stamp.",
     CheckConditionalKeys},
    {"keys-flattened-drawing", "keys",
     "In a flattened drawing a picture symbol is an element with all its keys, in a scene or not, and a shape symbol "
     "is a "
     "\"symbol3dflattened\" with the common keys alone; without a shape it is not there, and says so. Both can be read "
     "again.",
     CheckFlattened},
    {"content-round-trip", "saved-content",
     "What was saved, read and saved again is the same to the bit, also where numbers are none, infinite, the largest "
     "or the "
     "smallest, and where texts are long, not UTF-8 or full of control characters. Only where a symbol stands by its "
     "parts "
     "follows from where these are now.",
     CheckRoundTrip},
    {"content-locale", "saved-content", "Saved content does not depend on how the user's language writes numbers.",
     CheckContentLocale},
    {"unknown-kept", "saved-content",
     "Properties and child elements that the plug-in does not know, from a newer version or another program, are saved "
     "again "
     "as they were read.",
     CheckUnknownKept},
    {"content-truncated", "saved-content",
     "Content that ends anywhere is read as far as it goes, without an error; what is missing has its default.",
     CheckTruncated},
    {"content-wrong-types", "saved-content",
     "A key with a value of a type that it never has does no harm: the content is read, the key has its default, and "
     "is saved "
     "again with its own type.",
     CheckWrongTypes},
    {"content-older", "saved-content",
     "Rotations that older versions saved as yes or no are read as 1 and 0. Keys of a tag that stand outside any tag "
     "are "
     "passed over.",
     CheckOlderContent},
};

} // namespace

std::span<const Check> ContentChecks() { return kContentChecks; }

} // namespace lusym::check
