#include "support/Contains.h"
#include "support/SessionTest.h"

#include <du/UserData.h>
#include <luhost/Document.h>
#include <luhost/ProductMeshReader.h>
#include <luhost/ProductModel.h>
#include <luhost/ServiceModel.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>

namespace test
{

namespace
{

using luhost::Document;
using luhost::PackageEntry;
using luhost::ProductModel;

class MemoryPackages : public luhost::PackageFormat
{
public:
    bool Read(const std::string& path, std::vector<PackageEntry>& entries, std::string&) const override
    {
        for (const auto& [name, bytes] : files[path]) {
            entries.push_back({name, bytes});
        }
        return true;
    }
    bool Write(const std::string& path, std::vector<PackageEntry> entries, std::string&) const override
    {
        files[path].clear();
        for (PackageEntry& entry : entries) {
            EXPECT_TRUE(files[path].emplace(entry.name, entry.bytes).second) << entry.name;
        }
        return true;
    }

    mutable std::map<std::string, std::map<std::string, std::string>> files;
};

dg::Location At(double x)
{
    return {dg::FMat33(0.0F, -1.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 1.0F), {x, 0.1, -0.0}};
}

du::SmartPtr<luk::Mesh> MakeMesh(float size)
{
    return du::MakeCounted<luk::Mesh>(
        std::vector<dg::FVec3>{{0.0F, 0.0F, 0.0F}, {size, 0.0F, 0.0F}, {0.0F, 0.1F, 0.0F}},
        std::vector<std::uint32_t>{0, 1, 2}, std::vector<luk::Mesh::Part>{{0, 1, {0.1F, 0.2F, 0.3F, 1.0F}}});
}

/// A pump with two units of two bolts each, and a lid.
ProductModel Pump()
{
    ProductModel model;
    model.components = {{"Bolt <M6>", MakeMesh(1.0F), {}},
                        {"Unit", nullptr, {{"b1", 0, At(1.0)}, {"b2", 0, At(2.0)}}},
                        {"Lid", MakeMesh(2.0F), {}},
                        {"Pump", nullptr, {{"u1", 1, At(10.0)}, {"u2", 1, At(20.0)}, {"lid", 2, {}}}}};
    model.components[3].uses[2].location = dg::Location::IDENTITY;
    return model;
}

class ProductTest : public SessionTest
{
protected:
    std::unique_ptr<Document> Make(const ProductModel& model)
    {
        auto document = Document::Create({nullptr, m_packages});
        std::string problem;
        EXPECT_TRUE(document->SetProduct(model, problem)) << problem;
        return document;
    }
    std::unique_ptr<Document> Open()
    {
        std::string error;
        auto document = Document::Open("d", {nullptr, m_packages}, error);
        EXPECT_TRUE(document) << error;
        return document;
    }
    const std::map<std::string, std::string>& Save(const Document& document)
    {
        std::string error;
        EXPECT_TRUE(document.Save("d", error)) << error;
        return m_packages->files["d"];
    }
    /// With this between the tags of its product, and one mesh.
    std::unique_ptr<Document> OpenProduct(const std::string& product)
    {
        m_packages->files["d"] = {
            {"document.xml", "<document version='1'><product>" + product + "</product></document>"},
            {"product/mesh-1.ply", luhost::MeshToPly(*MakeMesh(1.0F))},
            {"product/mesh-2.ply", "ply"}};
        return Open();
    }
    static du::SmartPtr<luk::ShapeInstance> Part(const Document& document, const char* path)
    {
        const luk::ShapeScene& scene = *document.GetShapeScene();
        return scene.GetShapeInstance(scene.GetTree()->FindInstance(du::Symbol(path)));
    }

    /// @param isMarked as those are that are attached; the id says it only of some
    static void AddSymbol(const Document& document, const char* id, bool isMarked)
    {
        const auto node = du::MakeCounted<luk::ComponentNode>(du::Symbol("s"));
        du::SmartPtr<luk::ComponentInstance> use;
        EXPECT_TRUE(document.GetStructure()->GetRoot()->AddChild(node, du::Symbol(id), use));
        const auto part = Part(document, std::string("/").append(id).c_str());
        part->SetLocation(At(1.0), false);
        if (isMarked) {
            part->SetUserData(du::UserData::GetId("drellin::Drellin3DSymbolUserDataId"), node);
        }
    }

    std::shared_ptr<MemoryPackages> m_packages = std::make_shared<MemoryPackages>();
};

TEST_F(ProductTest, SavedAndOpenedAndSavedAgainIsTheSameToTheByte)
{
    std::map<std::string, std::string> first;
    std::string problem;
    {
        const auto document = Make(Pump());
        luhost::ServiceModel service;
        ASSERT_TRUE(luhost::ServiceModel::Parse("<service><node id='g' name='Group'><node id='n' part='/u2/b1'/></node>"
                                                "<node id='gone' part='/no/where'/></service>",
                                                service, problem));
        ASSERT_TRUE(document->SetService(service, problem));
        Part(*document, "/u1")->SetVisibility(false);
        Part(*document, "/u2/b1")->SetLocation(At(77.25), true);
        Part(*document, "/lid")->SetColor({1.0F, 0.5F, 0.0F, 1.0F});
        Part(*document, "/lid")->OverrideTransparency(0.25F);
        const std::map<std::string, std::string> withoutSymbols = Save(*document);
        AddSymbol(*document, "symbol:1", false);
        AddSymbol(*document, "own", true);
        first = Save(*document);
        EXPECT_EQ(first, withoutSymbols) << "a symbol in the tree saves itself, whatever its id";
    }
    EXPECT_EQ(first.size(), 3u) << "a mesh that is used four times is there once";
    const auto document = Open();
    EXPECT_EQ(document->GetProblems(),
              std::vector<std::string>{"there is no part \"/no/where\" for the service node \"/gone\""});
    EXPECT_EQ(Save(*document), first);

    const luk::ShapeScene& scene = *document->GetShapeScene();
    EXPECT_EQ(luk::World::GetWorld()->GetTree(), scene.GetTree());
    EXPECT_EQ(scene.GetTree()->GetInstanceCount(), 7u);
    const auto bolt = Part(*document, "/u1/b2");
    EXPECT_EQ(bolt->GetInstance()->GetNode()->GetName().GetText(), "Bolt <M6>");
    EXPECT_EQ(bolt->GetLocation(), At(10.0) * At(2.0));
    EXPECT_EQ(bolt->GetShape(), Part(*document, "/u2/b1")->GetShape());
    EXPECT_EQ(bolt->GetShape()->GetMesh()->GetParts().at(0).color, dg::Color(0.1F, 0.2F, 0.3F, 1.0F));
    EXPECT_FALSE(bolt->IsVisible());
    EXPECT_TRUE(bolt->IsShown());
    EXPECT_EQ(Part(*document, "/u2/b1")->GetLocation(), At(77.25));
    EXPECT_EQ(Part(*document, "/lid")->GetTransparency(), 0.25F);
    const auto tree = lukapp::illustration::DrellinApp::GetDrellinApp()->GetSbomTree();
    EXPECT_EQ(tree->FindInstance(du::Symbol("/g/n"))->GetEbomInstance(), Part(*document, "/u2/b1")->GetInstance());
}

TEST_F(ProductTest, AnotherProductTakesOverWhatHasTheSameIds)
{
    const auto document = Make(Pump());
    luhost::ServiceModel service;
    service.nodes.resize(2);
    service.nodes[0] = {"n", "", "/lid", luhost::ServiceModel::kNoParent, ""};
    service.nodes[1] = {"later", "", "/new", luhost::ServiceModel::kNoParent, ""};
    std::string problem;
    ASSERT_TRUE(document->SetService(service, problem));
    Part(*document, "/lid")->SetVisibility(false);
    Part(*document, "/u1")->SetVisibility(false);
    ProductModel next = Pump();
    next.components[3].uses = {{"lid", 2, At(5.0)}, {"new", 1, At(6.0)}};
    AddSymbol(*document, "own", true);
    ASSERT_TRUE(document->SetProduct(next, problem)) << problem;
    EXPECT_TRUE(Part(*document, "/own")) << "a symbol stays";
    EXPECT_FALSE(Part(*document, "/u1"));
    EXPECT_FALSE(Part(*document, "/lid")->IsShown());
    EXPECT_TRUE(Part(*document, "/lid")->GetInstance()->GetSbomInstance());
    EXPECT_TRUE(Part(*document, "/new")->GetInstance()->GetSbomInstance());

    const std::map<std::string, std::string> before = Save(*document);
    for (const char* const refused : {"a/b", "own"}) {
        next.components[3].uses[0].id = refused;
        EXPECT_FALSE(document->SetProduct(next, problem));
        EXPECT_TRUE(Contains(problem, refused));
        EXPECT_EQ(Save(*document), before) << "what is refused changes nothing";
    }
}

TEST_F(ProductTest, WhatIsNotSoundIsKeptAndTold)
{
    const std::string part = "<component name='p' mesh='1'/>";
    const auto root = [&](const std::string& uses) {
        return "<components>" + part + "<component name='r'>" + uses + "</component></components>";
    };
    std::string laughs = part;
    for (int i = 0; i < 60; ++i) {
        const std::string below = std::to_string(i);
        laughs +=
            "<component><use id='a' component='" + below + "'/><use id='b' component='" + below + "'/></component>";
    }
    std::string chain = part;
    for (int i = 0; i < 300; ++i) {
        chain += "<component><use id='a' component='" + std::to_string(i) + "'/></component>";
    }
    const std::pair<std::string, const char*> refused[] = {
        {"", "no component"},
        {"<components/>", "no component"},
        {"<components>" + part + "</components>", "mesh of its own"},
        {"<components>" + part + part + "<component><use id='a' component='0'/></component></components>",
         "component 1 is used by no other"},
        {"<components><component mesh='9'/><component/></components>", "no mesh 9"},
        {"<components><component mesh='-1'/><component/></components>", "no mesh -1"},
        {"<components><component mesh='2'/><component/></components>", "product/mesh-2.ply: it is no mesh"},
        {"<components>" + laughs + "</components>", "more than 2000000 parts"},
        {"<components>" + chain + "</components>", "200 levels deep"},
        {root("<use component='0'/>"), "no id"},
        {root("<use id='a'/>"), "no component"},
        {root("<use id='a' component='0'/><use id='a' component='0'/>"), "second part has the id \"a\""},
        {root("<use id='a' component='1'/>"), "does not stand before"},
        {root("<use id='a' component='18446744073709551615'/>"), "does not stand before"},
        {root("<use id='a/b' component='0'/>"), "no id of a part"},
        {root("<use id='symbol:1' component='0'/>"), "no id of a part"},
        {root("<use id='a' component='0' location='1 0 0'/>"), "location"},
        {root("<use id='a' component='0' location='1 0 0 0 1 0 0 0 1 nan 0 0'/>"), "no place"},
        {root("<use id='a' component='0' location='1 0 0 0 1 0 0 0 1 1e10 0 0'/>"), "no place"},
        {root("<use id='a' component='0' location='inf 0 0 0 1 0 0 0 1 0 0 0'/>"), "matrix"},
        {root("<use id='a' component='0' location='1 0 0 2 0 0 0 0 1 0 0 0'/>"), "flattens"},
    };
    for (const auto& [xml, reason] : refused) {
        const auto document = OpenProduct(xml);
        EXPECT_TRUE(Contains(document->GetProblems().at(0), reason)) << document->GetProblems()[0];
        EXPECT_EQ(document->GetShapeScene()->GetTree()->GetInstanceCount(), 0u);
        const std::map<std::string, std::string> saved = Save(*document);
        EXPECT_EQ(saved.size(), 3u);
        EXPECT_EQ(Save(*Open()), saved);
    }
    const auto document = Open();
    std::string problem;
    EXPECT_TRUE(document->SetProduct(Pump(), problem));
    EXPECT_EQ(Save(*document).size(), 3u);
    EXPECT_TRUE(Open()->GetProblems().empty());
}

TEST_F(ProductTest, WhatIsNotUnderstoodStaysInItsPlace)
{
    const auto document = OpenProduct(
        "<early/><components c='1'><component name='p' mesh='1' d='2'/><gap/><component name='r'><before/><use id='a' "
        "component='0' e='3'><in/></use></component></components><parts><part path='/a' hidden='true' "
        "f='4'><look/></part><part "
        "path='/b'/><part path='/a' hidden='maybe'/><state/><part path='/a' location='0 0 0 0 0 0 0 0 0 0 0 "
        "0'/></parts><service><node/></service><late/>");
    EXPECT_EQ(document->GetProblems().size(), 4u) << "three parts and the service tree";
    EXPECT_EQ(document->GetUnknown().size(), 11u);
    EXPECT_FALSE(Part(*document, "/a")->IsShown());
    const std::map<std::string, std::string> saved = Save(*document);
    const std::string& text = saved.at("document.xml");
    std::size_t at = 0;
    for (const char* const kept :
         {"<early>", "<components c=\"1\"", "mesh=\"1\" d=\"2\"", "<gap>", "<before>", "e=\"3\"", "<in>", "path=\"/b\"",
          "hidden=\"maybe\"", "<state>", "path=\"/a\" location=\"0 0", "hidden=\"true\" f=\"4\"", "<look>", "<service>",
          "<late>"}) {
        at = text.find(kept, at);
        ASSERT_NE(at, std::string::npos) << kept << " in " << text;
    }
    EXPECT_EQ(Save(*Open()), saved);

    const auto serviced = OpenProduct("<components><component/></components><service s='1'><node id='g' t='2'><node "
                                      "id='n' u='3' part='/gone'/></node></service>");
    std::string problem;
    ASSERT_TRUE(serviced->SetProduct(Pump(), problem));
    const std::string tree = Save(*serviced).at("document.xml");
    for (const char* const kept :
         {"<service s=\"1\">", "<node id=\"g\" name=\"\" t=\"2\">", "part=\"/gone\" u=\"3\"/>"}) {
        EXPECT_NE(tree.find(kept), std::string::npos) << kept << " in " << tree;
    }
}

TEST(ProductMeshReader, RefusesWhatIsNoMeshOfOurs)
{
    const TemporaryFolder folder;
    const std::string sound = luhost::MeshToPly(*MakeMesh(1.0F));
    const std::size_t body = sound.find("end_header\n") + 11;
    const auto with = [&](std::size_t offset, auto value) {
        std::string bytes = sound;
        std::memcpy(bytes.data() + body + offset, &value, sizeof value);
        return bytes;
    };
    std::string counted = sound;
    counted.replace(counted.find("vertex 3"), 8, "vertex 4294967295");
    const std::pair<std::string, const char*> cases[] = {
        {"", "no mesh"},
        {sound.substr(0, body - 1), "no mesh"},
        {sound.substr(0, sound.size() - 1), "promises"},
        {sound + "x", "promises"},
        {counted, "promises"},
        {with(0, std::numeric_limits<float>::quiet_NaN()), "vertex 0"},
        {with(12, 1e10F), "vertex 1"},
        {with(36, char{4}), "no triangle"},
        {with(37, std::uint32_t{3}), "no such corners"},
        {with(49, std::uint32_t{2}), "leads beyond"},
        {with(53, std::uint32_t{0xFFFFFFFF}), "leads beyond"},
        {with(57, 2.0F), "no color"},
    };
    for (const auto& [bytes, reason] : cases) {
        std::string problem;
        EXPECT_FALSE(luhost::ProductMeshReader().Read(folder.Write("m.ply", bytes), problem));
        EXPECT_TRUE(Contains(problem, reason)) << problem;
    }
    std::string problem;
    const auto read = luhost::ProductMeshReader().Read(folder.Write("m.ply", sound), problem);
    ASSERT_TRUE(read) << problem;
    EXPECT_EQ(luhost::MeshToPly(*read), sound);
}

} // namespace

} // namespace test
