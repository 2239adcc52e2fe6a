#include "FollowingSymbols.h"

#include "annotations3d/SymbolAnnotation.h"
#include "DocumentSource.h"
#include "FileText.h"
#include "OutputFile.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"

#include <luk/ShapeInstance.h>

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
        if (const auto symbol = du::DynamicCast<SymbolAnnotation>(annotation)) {
            m_before.push_back({symbol, PositionOf(*symbol), symbol->IsVisible()});
        }
    }
}

FollowingSymbols::~FollowingSymbols() = default;

void FollowingSymbols::Finish()
{
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
