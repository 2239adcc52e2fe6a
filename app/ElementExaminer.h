#pragma once

#include "Finding.h"
#include "LibraryRules.h"

#include <dg/XmlElem.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lusym
{

class MessageKeyExaminer;

/// Compares elements of a library document with the rules of the format, and tells what the loader skips or reads
/// otherwise than it is written.
class ElementExaminer
{
public:
    static constexpr std::size_t kMostChildren = 20;
    static constexpr std::size_t kMostAttributes = 12;
    /// The last child of each rule, which is the one that counts; null where there is none.
    using LastChildren = std::array<dg::XmlElem, kMostChildren>;

    ElementExaminer(std::vector<Finding>& findings, MessageKeyExaminer& keys) : m_findings(findings), m_keys(keys) {}

    void Add(FindingCode code, const dg::XmlElem& element, std::string text, std::string mend);

    void ExamineAttributes(const dg::XmlElem& element, std::span<const AttributeRule> rules);
    LastChildren ExamineChildren(const dg::XmlElem& parent, std::span<const ChildRule> rules);

    /// Tells that an element is none of those known in its parent.
    void AddUnknown(const dg::XmlElem& element, std::string_view parentName, std::span<const std::string_view> known);
    void ExamineStrayText(const dg::XmlElem& element);
    /// Tells of what gets lost in a text that is kept as it is.
    void ExamineText(const dg::XmlElem& element);

    /// The text of an element, valid until the next call.
    std::string_view TextOf(const dg::XmlElem& element) { return element.GetTextView(m_spare); }

private:
    /// One bit for each rule.
    using RuleSet = std::bitset<kMostAttributes>;
    /// For each attribute of a kind the last element that had it.
    using AttributeOwners = std::array<dg::XmlElem, 2>;

    void ExamineAttribute(const dg::XmlElem& element, const dg::XmlAttribute& attribute,
                          std::span<const AttributeRule> rules, RuleSet& seen);
    void ExamineOwners(AttributeOwners& owners, const dg::XmlElem& later, std::span<const AttributeRule> rules);
    void AddRepeated(const dg::XmlElem& earlier, const dg::XmlElem& later);
    void ExamineCarriageReturn(const dg::XmlElem& element, std::string_view what, std::string_view text);
    void ExamineValue(const dg::XmlElem& element, ValueKind kind);
    void ExamineKeyed(const dg::XmlElem& element, std::string_view besides);
    void ExamineBoolean(const dg::XmlElem& element, std::string_view what, std::string_view text);
    void ExamineNumberText(const dg::XmlElem& element, std::string_view what, std::string_view text,
                           AttributeKind kind);
    void ExamineLocation(const dg::XmlElem& element, const dg::XmlAttribute& attribute);
    void ExamineTags(const dg::XmlElem& tags);
    void ExamineTag(const dg::XmlElem& tag);

    std::vector<Finding>& m_findings;
    MessageKeyExaminer& m_keys;
    std::string m_spare;
};

} // namespace lusym
