#include "ElementExaminer.h"

#include "MessageKeyExaminer.h"
#include "Printable.h"
#include "xml/LibraryFormat.h"

#include <dg/ParseNumber.h>
#include <luk/illustration/SequencerTag.h>

#include <algorithm>
#include <utility>

namespace lusym
{

namespace
{

namespace format = lusymbols::format;

template <class Rule>
std::vector<std::string_view> NamesOf(std::span<const Rule> rules)
{
    std::vector<std::string_view> names;
    for (const Rule& rule : rules) {
        names.push_back(rule.name);
    }
    return names;
}

bool IsLayout(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

std::string MendFor(std::string_view name, std::span<const std::string_view> known)
{
    const std::string_view nearest = NearestName(name, known);
    return nearest.empty() ? std::string("Remove it.") : "Did you mean \"" + std::string(nearest) + "\"?";
}

} // namespace

void ElementExaminer::Add(FindingCode code, const dg::XmlElem& element, std::string text, std::string mend)
{
    m_findings.push_back({code, element.GetLine(), 0, std::move(text), std::move(mend)});
}

void ElementExaminer::AddUnknown(const dg::XmlElem& element, std::string_view parentName,
                                 std::span<const std::string_view> known)
{
    const std::string_view name = element.GetName();
    Add(FindingCode::UnknownElement, element,
        "the element " + Quote(name) + " is unknown in " + Quote(parentName) + "; the loader skips it",
        MendFor(name, known));
}

void ElementExaminer::ExamineStrayText(const dg::XmlElem& element)
{
    const std::string_view text = TextOf(element);
    if (!IsLayout(text)) {
        Add(FindingCode::StrayText, element,
            "the text " + Quote(text) + " stands in " + Quote(element.GetName()) +
                ", which has none; the loader skips it",
            "Remove it.");
    }
}

void ElementExaminer::ExamineText(const dg::XmlElem& element)
{
    ExamineCarriageReturn(element, element.GetName(), TextOf(element));
}

/// The file keeps texts as they are, and whoever reads its lines takes the return before a line feed for their end.
void ElementExaminer::ExamineCarriageReturn(const dg::XmlElem& element, std::string_view what, std::string_view text)
{
    if (text.find('\r') != std::string_view::npos) {
        Add(FindingCode::CarriageReturn, element,
            "a carriage return stands in " + Quote(what) +
                "; before a line feed it is lost once the library is "
                "written and read again",
            "Remove it.");
    }
}

void ElementExaminer::ExamineAttributes(const dg::XmlElem& element, std::span<const AttributeRule> rules)
{
    RuleSet seen;
    for (dg::XmlAttribute attribute = element.FirstAttribute(); attribute; attribute = attribute.Next()) {
        ExamineAttribute(element, attribute, rules, seen);
    }
}

void ElementExaminer::ExamineAttribute(const dg::XmlElem& element, const dg::XmlAttribute& attribute,
                                       std::span<const AttributeRule> rules, RuleSet& seen)
{
    const std::string_view name = attribute.GetName();
    const auto rule = std::ranges::find(rules, name, &AttributeRule::name);
    if (rule == rules.end()) {
        Add(FindingCode::UnknownAttribute, element,
            "the attribute " + Quote(name) + " is unknown in " + Quote(element.GetName()) + "; the loader skips it",
            MendFor(name, NamesOf(rules)));
        return;
    }
    const auto index = static_cast<std::size_t>(rule - rules.begin());
    if (seen.test(index)) {
        Add(FindingCode::UnknownAttribute, element,
            "the attribute " + Quote(name) + " stands in " + Quote(element.GetName()) +
                " a second time; only one of them counts",
            "Keep one of them.");
        return;
    }
    seen.set(index);
    if (rule->kind == AttributeKind::Boolean) {
        ExamineBoolean(element, name, attribute.GetValue());
    } else if (rule->kind == AttributeKind::Location) {
        ExamineLocation(element, attribute);
    } else if (rule->kind == AttributeKind::Text) {
        ExamineCarriageReturn(element, name, attribute.GetValue());
    } else {
        ExamineNumberText(element, name, attribute.GetValue(), rule->kind);
    }
}

ElementExaminer::LastChildren ElementExaminer::ExamineChildren(const dg::XmlElem& parent,
                                                               std::span<const ChildRule> rules)
{
    LastChildren last{};
    AttributeOwners flips{};
    AttributeOwners rotations{};
    std::size_t next = 0;
    for (dg::XmlElem child = parent.FirstChild(); child; child = child.NextSibling()) {
        const std::string_view name = child.GetName();
        // Children mostly come in the order of the rules.
        std::size_t tried = 0;
        while (tried < rules.size() && rules[(next + tried) % rules.size()].name != name) {
            ++tried;
        }
        if (tried == rules.size()) {
            AddUnknown(child, parent.GetName(), NamesOf(rules));
            continue;
        }
        const std::size_t at = (next + tried) % rules.size();
        next = at + 1;
        ExamineValue(child, rules[at].kind);
        if (rules[at].kind == ValueKind::Tags && !last[0] && child.FirstChild()) {
            Add(FindingCode::TagBeforeName, child,
                "the tags stand before the entry's name, so that they carry an empty name",
                "Put \"name\" before \"tags\".");
        }
        if (rules[at].kind == ValueKind::Url && !child.HasAttribute(format::kUrl)) {
            continue;
        }
        if (rules[at].kind == ValueKind::Flip || rules[at].kind == ValueKind::Rotate) {
            ExamineOwners(rules[at].kind == ValueKind::Flip ? flips : rotations, child, AttributesOf(rules[at].kind));
        } else if (last[at] && rules[at].kind != ValueKind::Tags) {
            // Tags of several lists are all read.
            AddRepeated(last[at], child);
        }
        last[at] = child;
    }
    return last;
}

/// An attribute that such an element lacks keeps the value that an element before it gave.
void ElementExaminer::ExamineOwners(AttributeOwners& owners, const dg::XmlElem& later,
                                    std::span<const AttributeRule> rules)
{
    dg::XmlElem overwritten;
    for (std::size_t index = 0; index < owners.size(); ++index) {
        if (later.HasAttribute(rules[index].name)) {
            overwritten = owners[index] ? owners[index] : overwritten;
            owners[index] = later;
        }
    }
    if (overwritten) {
        AddRepeated(overwritten, later);
    }
}

void ElementExaminer::AddRepeated(const dg::XmlElem& earlier, const dg::XmlElem& later)
{
    Add(FindingCode::RepeatedChild, later,
        Quote(later.GetName()) + " stands here again and overwrites what it shares with the one at line " +
            std::to_string(earlier.GetLine()),
        "Keep one of them.");
}

void ElementExaminer::ExamineValue(const dg::XmlElem& element, ValueKind kind)
{
    ExamineAttributes(element, AttributesOf(kind));
    if (kind == ValueKind::Tags) {
        ExamineTags(element);
        return;
    }
    for (dg::XmlElem child = element.FirstChild(); child; child = child.NextSibling()) {
        AddUnknown(child, element.GetName(), {});
    }
    if (kind == ValueKind::Text || kind == ValueKind::Keyed || kind == ValueKind::Quantity) {
        ExamineText(element);
    }
    if (!HasText(kind)) {
        ExamineStrayText(element);
    } else if (kind == ValueKind::Keyed) {
        ExamineKeyed(element, TextOf(element));
    } else if (kind == ValueKind::Quantity) {
        ExamineKeyed(element, element.GetAttribute(format::kUnit));
    } else if (kind == ValueKind::Boolean) {
        ExamineBoolean(element, element.GetName(), TextOf(element));
    } else if (kind == ValueKind::Integer) {
        ExamineNumberText(element, element.GetName(), TextOf(element), AttributeKind::Integer);
    } else if (kind == ValueKind::Real) {
        ExamineNumberText(element, element.GetName(), TextOf(element), AttributeKind::Real);
    }
}

void ElementExaminer::ExamineKeyed(const dg::XmlElem& element, std::string_view besides)
{
    if (!element.HasAttribute(format::kLocId)) {
        return;
    }
    const std::string_view key = element.GetAttribute(format::kLocId);
    if (!IsLayout(besides)) {
        Add(FindingCode::BesideKey, element,
            Quote(besides) + " stands beside the key " + Quote(key) + " and is not used",
            "Remove the text or the key.");
    }
    m_keys.Examine(key, element.GetLine(), m_findings);
}

void ElementExaminer::ExamineBoolean(const dg::XmlElem& element, std::string_view what, std::string_view text)
{
    if (dg::ParseBool(text, true) != dg::ParseBool(text, false)) {
        Add(FindingCode::NotABoolean, element,
            Quote(text) + " is no truth value for " + Quote(what) + ", so that the default stands",
            "Write \"true\" or \"false\".");
    }
}

void ElementExaminer::ExamineNumberText(const dg::XmlElem& element, std::string_view what, std::string_view text,
                                        AttributeKind kind)
{
    const NumberFault fault = ExamineNumber(text, kind);
    if (fault == NumberFault::None) {
        return;
    }
    const std::string subject = Quote(text) + " for " + Quote(what);
    const char* const form = kind == AttributeKind::Integer ? "Write a whole number." : "Write a number such as 2.5.";
    if (fault == NumberFault::NoNumber) {
        Add(FindingCode::NumberReadsAsZero, element, subject + " is no number and reads as 0", form);
    } else if (fault == NumberFault::CutOff) {
        Add(FindingCode::NumberCutOff, element, subject + " reads as " + ReadNumber(text, kind), form);
    } else {
        Add(FindingCode::NumberRounded, element, subject + " is written as " + ReadNumber(text, kind),
            "Six digits are all that the file keeps.");
    }
}

void ElementExaminer::ExamineLocation(const dg::XmlElem& element, const dg::XmlAttribute& attribute)
{
    // Of two different fallbacks the one that comes back shows that the text was none.
    const dg::Location other(dg::FMat33::IDENTITY, dg::DPoint3D(1.0, 0.0, 0.0));
    const std::string name(attribute.GetName());
    const dg::Location read = element.GetAttributeAsLocation(name.c_str());
    const dg::Location again = element.GetAttributeAsLocation(name.c_str(), other);
    if (std::not_equal_to<double>()(read.GetPosition().x, again.GetPosition().x)) {
        Add(FindingCode::NotALocation, element,
            Quote(attribute.GetValue()) + " is no location, so that the identity stands",
            "Write twelve numbers: the matrix row by row, then the position.");
    }
}

void ElementExaminer::ExamineTags(const dg::XmlElem& tags)
{
    ExamineStrayText(tags);
    for (dg::XmlElem tag = tags.FirstChild(); tag; tag = tag.NextSibling()) {
        if (tag.GetName() == format::kTag) {
            ExamineTag(tag);
        } else {
            AddUnknown(tag, format::kTags, std::span(&format::kTag, 1));
        }
    }
}

void ElementExaminer::ExamineTag(const dg::XmlElem& tag)
{
    using luk::illustration::SequencerTag;
    ExamineAttributes(tag, TagAttributes());
    ExamineStrayText(tag);
    ExamineChildren(tag, TagChildren());
    const std::string_view type = tag.GetAttribute(format::kType);
    const du::Symbol keyword = du::Symbol::Find(type);
    if (keyword.IsNull() || !SequencerTag::IsKnownType(SequencerTag::GetTypeForSymbol(keyword))) {
        Add(FindingCode::UnknownTagType, tag, "the tag type " + Quote(type) + " is no keyword of this host",
            "Nothing has to be done if another program knows it.");
    }
}

} // namespace lusym
