#pragma once

#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolAnnotationFlattened.h"
#include "catalog/PartslibraryOlItem.h"
#include "support/SessionTest.h"

#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <luk/AnnoSet.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/InstanceCheck.h>
#include <luk/SerializedContentElement.h>
#include <luk/Shape.h>
#include <luk/ShapeView.h>
#include <luk/Structure.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/IllMultiRootContainer.h>
#include <luloader/Loader.h>

#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace luk
{
class AnnoIdPathMapper : public du::RefCounted
{
};
} // namespace luk

namespace test
{

using Element = luk::SerializedContentElement;
using luannotations::ConnectedPartInfo;
using luannotations::SymbolAnnotation;
using luannotations::SymbolAnnotationFlattened;
using luannotations::SymbolInfo;
using lusymbols::PartslibraryOlItem;
using Deed = std::function<void()>;
using Part = du::SmartPtr<luk::ShapeInstance>;
using Parts = std::vector<ConnectedPartInfo>;
using Properties = std::vector<std::pair<const char*, Element::Value>>;
using Symbol = du::SmartPtr<SymbolAnnotation>;
using Text = du::Symbol;

inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
inline constexpr dg::FMat33 kQuarterTurn(0, -1, 0, 1, 0, 0, 0, 0, 1);

inline dg::Location At(double x, double y = 0.0) { return {dg::FMat33::IDENTITY, {x, y, 0.0}}; }

/// Takes any file that begins with S for a shape.
class TextReader : public luloader::ShapeReader
{
public:
    du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string&) const override
    {
        return TemporaryFolder::ReadFile(path).starts_with('S') ? MakeMesh() : nullptr;
    }
    static du::SmartPtr<luk::Mesh> MakeMesh()
    {
        return du::MakeCounted<luk::Mesh>(std::vector<dg::FVec3>(3), std::vector<std::uint32_t>{0, 1, 2},
                                          std::vector<luk::Mesh::Part>());
    }
};

/// Counts its completions and does something then.
struct Waiting : luk::AsyncEvent {
    void OnCompleted(int) override { ++completions, deed(); }
    Deed deed = [] {};
    int completions = 0;
};

/// A pump of an assembly "/a" with the parts "x" and "y", a part "/b", and the service nodes "/g" for "/a" and "/g/x" for
/// "/a/x", all at the origin. Run with the locks of annotations and without, with notifications routed and broadcast.
class Symbol3DTest : public SessionTest, public testing::WithParamInterface<std::tuple<bool, bool>>
{
protected:
    Symbol3DTest();
    ~Symbol3DTest() override { luk::ObjectWithRWLock::SetLocksEnabled(true); }

    /// Another product in place of the one before.
    void MakeProduct();
    static void Use(const du::SmartPtr<luk::ComponentNode>& parent, const du::SmartPtr<luk::ComponentNode>& child,
                    const char* id);

    du::SmartPtr<luk::Instance> Find(const std::string& path) const { return m_tree->FindInstance(Text(path)); }
    Part PartAt(const std::string& path) const { return m_scene->GetShapeInstance(Find(path)); }
    void Move(const std::string& path, const dg::Location& location) const
    {
        PartAt(path)->SetLocation(location, true);
    }
    /// All that a symbol must leave alone.
    std::string Product() const;

    static void Pump() { EXPECT_TRUE(luloader::Loader::GetLoader()->WaitForLoads()); }

    static luk::illustration::SymbolTemplateCollection& Collection()
    {
        return *luk::illustration::SymbolTemplateCollection::GetCollection();
    }
    static du::SmartPtr<PartslibraryOlItem> AddItem(const std::string& id, const std::string& file);
    static void Change(PartslibraryOlItem& item, const std::string& file)
    {
        item.SetOlUrl("SymbolsLibrary/Shape/" + file);
        Collection().NotifyChanged(du::SmartPtr<PartslibraryOlItem>(&item));
    }

    static SymbolInfo Record(const dg::DPoint3D& position, const Parts& parts = {});
    static Symbol Made(const SymbolInfo& info);
    /// In the scene's set, where nothing else holds it but the caller.
    Symbol Attached(const Symbol& symbol) const;
    Symbol Attached(const SymbolInfo& info) const { return Attached(Made(info)); }
    /// At a place, attached to parts.
    Symbol AttachedTo(const std::vector<const char*>& paths, const dg::DPoint3D& position) const;

    static dg::DPoint3D Where(const Symbol& symbol)
    {
        return symbol->GetShapeInstance() ? symbol->GetShapeInstance()->GetLocation().GetPosition() : dg::DPoint3D::BAD;
    }
    static Parts PartsOf(const Symbol& symbol)
    {
        Parts parts;
        symbol->GetConnectedPartInfo(parts);
        return parts;
    }

    static Element Make(const char* name, const Properties& properties);
    static Symbol Opened(const Element& element);
    static Element Saved(const du::SmartPtr<luk::Annotation>& annotation)
    {
        Element parent;
        annotation->Visit(parent);
        return parent.GetChildCount() > 0 ? parent.GetChild(0) : Element();
    }

    du::SmartPtr<luk::Structure> m_structure;
    du::SmartPtr<luk::ComponentNode> m_root;
    du::SmartPtr<luk::ComponentNode> m_assembly;
    du::SmartPtr<luk::Tree> m_tree;
    du::SmartPtr<luk::illustration::SbomTree> m_services;
    du::SmartPtr<luk::ShapeScene> m_scene;
};

} // namespace test
