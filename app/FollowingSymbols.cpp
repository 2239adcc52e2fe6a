#include "FollowingSymbols.h"

#include "annotations3d/SymbolAnnotation.h"
#include "DocumentSource.h"
#include "FileText.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolAttachment.h"
#include "SymbolState.h"

#include <luk/ShapeInstance.h>

#include <unordered_map>
#include <unordered_set>

namespace lusym
{

namespace
{

using luannotations::SymbolAnnotation;

dg::DPoint3D PositionOf(SymbolAnnotation& symbol)
{
    const du::SmartPtr<luk::ShapeInstance> instance = symbol.GetShapeInstance();
    return instance ? instance->GetLocation().GetPosition() : dg::DPoint3D::BAD;
}

} // namespace

FollowingSymbols::FollowingSymbols(DocumentSource& source) : m_source(source)
{
    for (const du::SmartPtr<luk::Annotation>& annotation : source.GetDocument().GetAnnotations()) {
        const auto symbol = du::DynamicCast<SymbolAnnotation>(annotation);
        // One that has the id of a part of the product shows that part, which is no symbol.
        if (symbol && symbol->GetShapeInstance() && symbol->GetShapeInstance()->IsOfSymbol()) {
            m_before.push_back({symbol, PositionOf(*symbol), symbol->IsVisible()});
        }
    }
}

FollowingSymbols::~FollowingSymbols() = default;

/// Symbols move silently, so that those on the nodes of others do not hear of it.
void FollowingSymbols::CarryAlong()
{
    std::unordered_map<const luk::ShapeInstance*, std::vector<SymbolAnnotation*>> riders;
    std::vector<SymbolAnnotation*> due;
    for (const Before& each : m_before) {
        for (const SymbolAttachment& attachment : AttachmentsOf(m_source.GetDocument(), *each.symbol)) {
            const PartLookup::Part part = FindAttachedPart(m_source.GetDocument(), attachment.path);
            if (part && part->IsOfSymbol()) {
                riders[part.get()].push_back(each.symbol.get());
            }
        }
        if (!(PositionOf(*each.symbol) == each.position)) {
            due.push_back(each.symbol.get());
        }
    }
    std::unordered_set<SymbolAnnotation*> seen(due.begin(), due.end());
    for (std::size_t next = 0; next < due.size() && !riders.empty(); ++next) {
        const du::SmartPtr<luk::ShapeInstance> moved = due[next]->GetShapeInstance();
        for (SymbolAnnotation* const rider : riders[moved.get()]) {
            rider->ApplyDeltaByConnectedPart(moved);
            if (seen.insert(rider).second) {
                due.push_back(rider);
            }
        }
    }
}

void FollowingSymbols::Finish()
{
    CarryAlong();
    for (const auto& [symbol, position, isVisible] : m_before) {
        const std::string line = Printable(m_source.GetName()) + ":" + Printable(symbol->GetIDPath().GetText()) + ": ";
        if (const dg::DPoint3D now = PositionOf(*symbol); !now.IsBad() && !(now == position)) {
            Settle(m_source.GetDocument(), *symbol);
            m_report += line + "follows to " + PointText(PositionOf(*symbol), true) + "\n";
        }
        if (symbol->IsVisible() != isVisible) {
            m_report += line + (isVisible ? "hidden" : "shown") + " with its part\n";
        }
    }
}

ExitCode FollowingSymbols::Put(const std::string& output) const
{
    if (OutputFile::IsStandardOutput(output)) {
        m_source.GetProgress().Tell(m_report);
        return ExitCode::Done;
    }
    return PutResult(m_report, m_source.GetProgress());
}

} // namespace lusym
