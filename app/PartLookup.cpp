#include "PartLookup.h"

#include "LibraryRules.h"
#include "PartState.h"
#include "Printable.h"

#include <luhost/Document.h>
#include <luk/ComponentInstance.h>
#include <luk/illustration/SbomInstance.h>
#include <luk/Instance.h>
#include <luk/Mesh.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>

#include <algorithm>
#include <utility>

namespace lusym
{

namespace
{

using Part = PartLookup::Part;

std::string PathOf(const Part& part) { return part->GetInstance()->GetIdPath().GetText(); }

std::string LastIdOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// "bolt" of "bolt-12", "bolt_12" and "bolt 12": ids of several occurrences are made of one name.
std::string StemOf(const std::string& id)
{
    const std::size_t end = id.find_last_not_of("0123456789");
    const bool isNumbered =
        end != id.npos && end > 0 && end + 1 < id.size() && std::string("-_. :").find(id[end]) != id.npos;
    return isNumbered ? id.substr(0, end) : id;
}

std::string PathsOf(const std::vector<Part>& parts)
{
    constexpr std::size_t kMost = 6;
    std::string paths;
    for (std::size_t index = 0; index < std::min(parts.size(), kMost); ++index) {
        paths.append(index == 0 ? "" : ", ").append(Printable(PathOf(parts[index])));
    }
    return parts.size() > kMost ? paths + " and " + std::to_string(parts.size() - kMost) + " more" : paths;
}

} // namespace

PartLookup::Found PartLookup::Find(const std::string& word)
{
    if (Part part = FindPart(m_document, word)) {
        return {part, {}};
    }
    ReadProduct();
    const Parts& parts = PartsCalled(word);
    if (parts.size() == 1) {
        return {parts.front(), {}};
    }
    if (!parts.empty()) {
        return {nullptr, std::to_string(parts.size()) + " parts are called " + Quote(word) + ": " + PathsOf(parts) +
                             ". Name one by its path"};
    }
    return {nullptr, "there is no part " + Quote(word) + Proposal(word)};
}

std::string PartLookup::Proposal(const std::string& word)
{
    // Each compares with all parts, and a table may be wrong from top to bottom.
    constexpr int kMostProposals = 5;
    const std::string last = LastIdOf(word);
    Parts meant = PartsCalled(last);
    if (meant.empty() && m_proposals++ < kMostProposals) {
        std::vector<std::string_view> known;
        for (const auto* const index : {&m_byId, &m_byName}) {
            for (const auto& [name, parts] : *index) {
                known.push_back(name);
            }
        }
        // Of several that are as near the same one in each run.
        std::ranges::sort(known);
        meant = PartsCalled(std::string(NearestName(last, known)));
    }
    return meant.empty() ? ". List those that there are with \"lusym part list\""
                         : ". Did you mean " + PathsOf(meant) + "?";
}

const PartLookup::Parts& PartLookup::PartsCalled(const std::string& word) const
{
    static const Parts none;
    for (const auto* const index : {&m_byId, &m_byName}) {
        if (const auto found = index->find(word); found != index->end()) {
            return found->second;
        }
    }
    return none;
}

void PartLookup::ReadProduct()
{
    if (std::exchange(m_isRead, true)) {
        return;
    }
    const auto add = [](auto& index, const std::string& word, const Part& part) {
        Parts& parts = index[word];
        if (parts.empty() || parts.back() != part) {
            parts.push_back(part);
        }
    };
    for (const Part& part : PartsOf(m_document)) {
        const auto node = part->GetInstance()->GetSbomInstance();
        const std::string ids[] = {LastIdOf(PathOf(part)),
                                   node ? LastIdOf(node->GetIdPath().GetText()) : std::string()};
        for (const std::string& id : ids) {
            add(m_byId, id, part);
            add(m_byStem, StemOf(id), part);
        }
        add(m_byName, NameOf(*part), part);
        add(m_byStem, StemOf(NameOf(*part)), part);
    }
    for (auto* const index : {&m_byId, &m_byName, &m_byStem}) {
        index->erase(std::string());
    }
}

Part PartLookup::FindHeir(const std::string& path, const dg::DPoint3D& lastPosition)
{
    ReadProduct();
    const std::string id = LastIdOf(path);
    const Parts* const called = &PartsCalled(id);
    const auto alike = m_byStem.find(StemOf(id));
    const Parts& candidates = called->empty() && alike != m_byStem.end() ? alike->second : *called;
    // All bolts of a product may be gone, and as many be called alike.
    return m_nearest.try_emplace(&candidates, candidates).first->second.Find(lastPosition);
}

std::string AttachmentPathOf(const luk::ShapeInstance& part)
{
    const auto node = part.GetInstance()->GetSbomInstance();
    return (node ? node->GetIdPath() : part.GetInstance()->GetIdPath()).GetText();
}

dg::DBox BoxOf(const luk::ShapeInstance& part)
{
    dg::DBox box;
    const auto& shape = part.GetShape();
    if (!shape || !shape->GetMesh()) {
        return box;
    }
    const dg::FBox& own = shape->GetMesh()->GetBox();
    const dg::Location& place = part.GetLocation();
    for (const float x : {own.GetMin().x, own.GetMax().x}) {
        for (const float y : {own.GetMin().y, own.GetMax().y}) {
            for (const float z : {own.GetMin().z, own.GetMax().z}) {
                box.Enclose(place.GetPosition() + place.GetMat() * dg::DVec3(x, y, z));
            }
        }
    }
    return box;
}

dg::DPoint3D MiddleOf(const luhost::Document& document, const luk::ShapeInstance& part)
{
    dg::DBox box;
    std::vector<du::SmartPtr<luk::Instance>> due = {part.GetInstance()};
    while (!due.empty()) {
        const du::SmartPtr<luk::Instance> instance = std::move(due.back());
        due.pop_back();
        if (const Part each = document.GetShapeScene()->GetShapeInstance(instance)) {
            box.Enclose(BoxOf(*each));
        }
        const auto below = instance->GetChildren();
        due.insert(due.end(), below.begin(), below.end());
    }
    return box.IsEmpty() ? part.GetLocation().GetPosition() : box.GetCenter();
}

} // namespace lusym
