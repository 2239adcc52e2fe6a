#include "DemoDocument.h"

namespace lusym
{

namespace
{

constexpr const char* kProductDocument = "gearbox.luz";
constexpr const char* kShape = "library/SymbolsLibrary/Shape/screwdriver.obj";
constexpr const char* kOtherShape = "library/SymbolsLibrary/standard/Shape/wrench.obj";
constexpr const char* kShapeEntry = "shp-screwdriver";

class ProductRoad : public DemoRoad
{
public:
    using DemoRoad::DemoRoad;

    bool Walk() { return MakeProduct() && MoveParts() && FollowLibrary() && Flatten(); }

private:
    bool MakeProduct()
    {
        return Say("A product of more than a hundred and fifty parts, with its service tree:") &&
               Run({"document", "new", m_start.product + "/gearbox.glb", "--service",
                    m_start.product + "/gearbox-service.xml", "-o", m_document, "--library", PathOf(kDeliveredLibrary),
                    "--library", PathOf(kUserLibrary)}) &&
               Run({"part", "list", m_document, "--find", "inspection-cover"}) &&
               Say("3D symbols on parts, which are named by their paths or by their nodes of the service tree:") &&
               Place({"--entry", "shp-arrow", "--attach", "/housing/inspection-cover", "--rotate", "y,90", "--color",
                      "#f06010"}) &&
               Place({"--entry", "shp-oil-drop", "--attach", "drain", "--scale", "2"}) &&
               Place({"--entry", kShapeEntry, "--attach", "/housing/inspection-cover/screw-1"});
    }

    bool MoveParts()
    {
        return Say("The cover is lifted, and its symbols go along:") &&
               Run({"part", "move", m_document, "/housing/inspection-cover", "--by", "0,0,60"}) &&
               Say("The drain plug is hidden, and so is its symbol:") && Run({"part", "hide", m_document, "drain"}) &&
               Say("The saved document is opened again:") && Run({"symbol", "list", m_document}) &&
               Run({"part", "show", m_document, "drain"});
    }

    bool FollowLibrary()
    {
        return Say("Now the entry \"" + std::string(kShapeEntry) + "\" gets another shape and another title.") &&
               ChangeEntry(kShapeEntry, "Loosen these screws", kShape, PathOf(kOtherShape)) &&
               RunInLanguage({"document", "update", m_document, "--dry-run"}) &&
               RunInLanguage({"document", "update", m_document}) && Say("Is anything amiss?") &&
               RunInLanguage({"document", "check", m_document}) &&
               Named(kProductDocument, "the product with its 3D symbols");
    }

    bool Flatten()
    {
        const std::string page = "gearbox-page.luz";
        return Say("The view as a 2D drawing:") && Run({"flatten", m_document, "-o", PathOf(page)}) &&
               Run({"symbol", "list", PathOf(page)}) && Named(page, "the view of the product, baked into a page");
    }

    bool Place(Arguments arguments)
    {
        arguments.insert(arguments.begin(), {"symbol", "place", m_document});
        return RunInLanguage(arguments);
    }

    bool Named(const std::string& name, const std::string& what)
    {
        m_files.Add(name, what);
        return true;
    }

    const std::string m_document = PathOf(kProductDocument);
};

} // namespace

bool WalkProductRoad(const DemoStart& start, DemoFiles& files, Progress& progress)
{
    return ProductRoad(start, files, progress).Walk();
}

} // namespace lusym
