#include "annotations2d/Symbol2D.h"

#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luannotations/ConstStrings.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/AssociativeObjectObserver.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/Scene.h>
#include <lumk/Stamp.h>

namespace luannotations
{

namespace
{

constexpr std::uint32_t kAnnotationKind = 0x100000;
constexpr float kInitialHalfSize = 30.0F;

} // namespace

Symbol2D::Symbol2D() : Annotation(kAnnotationKind, 0)
{
    InitializeAnnotation();
    m_info.showTooltipTitle = true;
    m_info.width = kInitialHalfSize;
    m_info.height = kInitialHalfSize;
    // The preferred colour is for symbols that are made from a record; one without starts black.
    m_info.lineColor = dg::Color::BLACK;
    m_info.fillColor = dg::Color::BLACK;
    m_origWidth = m_info.width;
    m_origHeight = m_info.height;
}

Symbol2D::Symbol2D(const Symbol2DInfo& record) : Annotation(kAnnotationKind, 0)
{
    // Binding a template makes handles of this symbol, which nobody holds yet.
    const ConstructionGuard guard(*this);
    InitializeAnnotation();
    SetSymbolInfo(record);
}

Symbol2D::Symbol2D(const Symbol2D& other)
    : du::RefCounted(other), Annotation(other), m_info(other.m_info), m_markup(other.m_markup), m_scene(other.m_scene),
      m_origWidth(other.m_origWidth), m_origHeight(other.m_origHeight), m_sourceUpdated(other.m_sourceUpdated),
      m_pendingEvent(other.m_pendingEvent), m_tempDir(other.m_tempDir), m_stamp2D(other.m_stamp2D),
      m_hasTemplate(other.m_hasTemplate), m_templateHolder(other.m_templateHolder),
      m_templateObserver(other.m_templateObserver), m_templateLoad(other.m_templateLoad)
{
    // The load under way will tell the original alone. The copy keeps what to go back to and starts a load of its own when
    // it is attached.
    m_templateLoad.fileName = du::Symbol();
    m_templateLoad.waiting = nullptr;
}

Symbol2D::~Symbol2D()
{
    UnregisterConsumer();
    UnregisterTemplateObserver();
    // A copy shares the markup, whose controller may be another symbol.
    if (m_markup && m_markup->GetController() == this) {
        m_markup->SetController(nullptr);
    }
}

void Symbol2D::InitializeAnnotation()
{
    SetClass(ConstStrings::luSymbol2D);
    SetPreselectionCursor(ConstStrings::luStampPreselectionCursor);
    m_info.image = new luk::Image;
}

du::SmartPtr<luk::Annotation> Symbol2D::Clone()
{
    const dp::ReadLockGuard lock(GetLock());
    const auto clone = du::MakeCounted<Symbol2D>(m_info);
    clone->SetCreatedFromFile(true);
    return clone;
}

void Symbol2D::SetSymbolInfo(const Symbol2DInfo& record)
{
    const dp::WriteLockGuard lock(GetLock());
    AbandonTemplateLoad();
    const du::SmartPtr<luk::Image> ownImage = m_info.image;
    const std::string boundTo = m_info.templateId;
    m_info = record;
    m_info.image = ownImage;
    m_origWidth = m_info.width;
    m_origHeight = m_info.height;

    // Without a file the URL becomes empty: a new record never shows the picture of the one before.
    du::Symbol url;
    GetImageFromTempDir(url);
    m_info.image->SetURL(url);

    if (m_info.title.IsEmpty() && !m_info.imageName.IsEmpty()) {
        m_info.title = m_info.imageName;
    }
    AssignTemplate(m_info.templateIndex);
    // A record that names no template, by its index or by its id, leaves the symbol bound, so that it has to know to what.
    if (m_hasTemplate && m_info.templateIndex == Symbol2DInfo::kNoTemplate && m_info.templateId.empty()) {
        m_info.templateId = boundTo;
    }
}

std::string Symbol2D::GetTitle() const { return m_info.title.GetText(); }

void Symbol2D::SetTitle(const std::string& title, bool showInTooltip)
{
    m_info.title = du::Symbol(title);
    m_info.showTooltipTitle = showInTooltip;
}

std::string Symbol2D::GetDescription() const { return m_info.description.GetText(); }

void Symbol2D::SetDescription(const std::string& description, bool showInTooltip)
{
    m_info.description = du::Symbol(description);
    m_info.showTooltipDescription = showInTooltip;
}

void Symbol2D::SetReverse(bool reverse)
{
    m_info.reverse = reverse;
    if (m_markup) {
        m_markup->SetReverse(reverse);
    }
}

void Symbol2D::SetFlipHorizontally(bool flip)
{
    m_info.flipHorizontally = flip;
    if (m_markup) {
        m_markup->SetFlipHorizontally(flip);
    }
}

void Symbol2D::SetPageNum(int pageNum)
{
    m_info.pageNum = pageNum;
    if (m_markup) {
        m_markup->SetPageNum(pageNum);
    }
}

void Symbol2D::GetOrigSize(float& width, float& height) const
{
    width = m_origWidth;
    height = m_origHeight;
}

void Symbol2D::SetOrigSize(float width, float height)
{
    m_origWidth = width;
    m_origHeight = height;
}

du::Symbol Symbol2D::GetIconName() const { return ConstStrings::luStampIcon; }

} // namespace luannotations
