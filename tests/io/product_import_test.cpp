#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <luhost/io/ProductImport.h>
#include <luhost/io/ZipPackageFormat.h>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <tuple>

namespace test
{

namespace
{

using luhost::ProductModel;
using luhost::io::ImportLimits;
using luhost::io::ModelReader;

/// One triangle, (0, 0, 0), (1, 0, 0) and (0, 1, 0), which mesh 0 shows; with these nodes, the first of which is the root.
std::string Gltf(const std::string& nodes, const std::string& count = "3",
                 const std::string& uri = "data:application/octet-stream;base64,"
                                          "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA")
{
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[)" + nodes +
           R"(],"meshes":[{"name":"Plate","primitives":[{"attributes":{"POSITION":0},"material":0}]}],"materials":[{)"
           R"("pbrMetallicRoughness":{"baseColorFactor":[1,0.2140411,0,0.5]}}],"accessors":[{"bufferView":0,)"
           R"("componentType":5126,"count":)" +
           count +
           R"(,"type":"VEC3"}],"bufferViews":[{"buffer":0,"byteLength":36}],"buffers":[{"byteLength":36,"uri":")" +
           uri + R"("}]})";
}

std::string Chain(std::size_t length, int childrenOfEach)
{
    std::string nodes;
    for (std::size_t i = 1; i <= length; ++i) {
        const std::string next = std::to_string(i);
        nodes += "{\"children\":[" + next + (childrenOfEach > 1 ? "," + next : "") + "]},";
    }
    return nodes + R"({"mesh":0})";
}

/// Every line of what a model holds: the names, where each use stands, and the number of triangles.
std::string Outline(const ProductModel& model)
{
    std::string text;
    for (const ProductModel::Component& component : model.components) {
        text += component.name + (component.mesh ? "*" + std::to_string(component.mesh->GetTriangleCount()) : "");
        for (const ProductModel::Use& use : component.uses) {
            const dg::DPoint3D& at = use.location.GetPosition();
            text += " " + use.id + "=" + std::to_string(use.component) + "@" + std::to_string(std::lround(at.x)) + "," +
                    std::to_string(std::lround(at.y)) + "," + std::to_string(std::lround(at.z));
        }
        text += "\n";
    }
    return text;
}

class ProductImportTest : public testing::Test
{
protected:
    /// @return the outline, or why there is none
    std::string Read(const std::string& name, const std::string& bytes, double millimetresPerUnit = 0.0)
    {
        std::string problem;
        const bool isRead = m_reader.ReadProduct(m_folder.Write(name, bytes), millimetresPerUnit, m_model, problem);
        return isRead ? Outline(m_model) : "problem: " + problem;
    }

    const TemporaryFolder m_folder;
    const ModelReader m_reader{IMPORT_PROGRAM};
    ProductModel m_model;
};

TEST_F(ProductImportTest, KeepsTheHierarchyAndSharesWhatIsAlike)
{
    const std::string nodes =
        R"({"name":"Pump","children":[1,2,7]},{"name":"Pair-1","children":[3,4]},{"name":"Pair-2","children":[5,6],)"
        R"("translation":[0,0,1]},{"name":"a/b","mesh":0},{"name":"a/b","mesh":0,"translation":[0.002,0,0]},)"
        R"({"name":"a/b","mesh":0},{"name":"a/b","mesh":0,"translation":[0.002,0,0]},{"name":"Eye of a camera"})";
    const std::string expected = "Plate*1\nPair a_b=0@0,0,0 a_b-2=0@2,0,0\nPump Pair-1=1@0,0,0 Pair-2=1@0,0,1000\n";
    EXPECT_EQ(Read("pump.gltf", Gltf(nodes)), expected);
    const luk::Mesh& mesh = *m_model.components[0].mesh;
    EXPECT_EQ(mesh.GetBox().GetMax(), dg::FVec3(1000.0F, 1000.0F, 0.0F));
    EXPECT_EQ(m_model.components[1].uses[1].location.GetPosition().x, 2.0) << "as it was written";
    EXPECT_NEAR(mesh.GetParts().at(0).color.green, 0.5F, 1e-4F) << "colors of glTF are linear";
    EXPECT_EQ(mesh.GetParts().at(0).color.alpha, 1.0F) << "opaque where nothing says that it is blended";
    EXPECT_EQ(Read("bare.gltf", Gltf(R"({"children":[1,2]},{"mesh":0},{"mesh":0})")),
              "Plate*1\nbare Plate=0@0,0,0 Plate-2=0@0,0,0\n");
    EXPECT_EQ(Read("other.GLTF", Gltf(R"({"name":"symbol:1","mesh":0})"), 25.4), "Plate*1\nother _symbol:1=0@0,0,0\n");
    EXPECT_FLOAT_EQ(m_model.components[0].mesh->GetBox().GetMax().x, 25.4F);
}

TEST_F(ProductImportTest, WeldsVerticesAndFindsColorsBesideTheModel)
{
    m_folder.Write("m.mtl", "newmtl red\nKd 1 0 0\nd 0\n");
    const std::string vertices = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv -0 0 0\nv 1 0 0\nv 0 0 1\n";
    EXPECT_EQ(Read("m.obj", "mtllib m.mtl\no one\n" + vertices + "usemtl red\nf 1 2 3\nf 4 6 5\nf 1 4 2\n"),
              "one*2\nm one=0@0,0,0\n");
    const luk::Mesh& mesh = *m_model.components[0].mesh;
    EXPECT_EQ(mesh.GetPositions().size(), 4u);
    EXPECT_EQ(mesh.GetParts().at(0).color, dg::Color(1.0F, 0.0F, 0.0F, 1.0F));

    // Of what the file says no colour the importers make it white, which has no faces on paper.
    std::string white = Gltf(R"({"mesh":0})");
    white.replace(white.find("[1,0.2140411,0,0.5]"), 19, "[1,1,1,1]");
    std::string bare = white;
    bare.erase(bare.find(",\"material\":0"), 13);
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
        "element face 1\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    const std::tuple<const char*, const std::string*, float> greys[] = {
        {"white.gltf", &white, 1.0F}, {"bare.gltf", &bare, 0.7F}, {"bare.ply", &ply, 0.7F}};
    for (const auto& [name, bytes, grey] : greys) {
        Read(name, *bytes);
        EXPECT_NEAR(m_model.components.at(0).mesh->GetParts().at(0).color.green, grey, 1e-4F) << name;
    }

    const std::string red = " 1 0 0\n";
    const std::string blue = " 0 0 1\n";
    Read("painted.obj", "v 0 0 0" + red + "v 1 0 0" + red + "v 0 1 0" + red + "v 0 0 0" + blue + "v 1 0 0" + blue +
                            "v 0 0 1" + blue + "f 1 2 3\nf 4 5 6\nf 1 3 2\n");
    const auto& parts = m_model.components.at(0).mesh->GetParts();
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].color, dg::Color(0.0F, 0.0F, 1.0F, 1.0F));
    EXPECT_EQ(parts[1].triangleCount, 2u);
}

TEST_F(ProductImportTest, ReadsTheUnitThatTheFileStates)
{
    const std::string dae =
        "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" version=\"1.4.1\"><asset><unit "
        "meter=\"0.0254\"/>"
        "<up_axis>Y_UP</up_axis></asset><library_geometries><geometry id=\"g\"><mesh><source id=\"p\"><float_array "
        "id=\"a\" count=\"9\">0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor source=\"#a\" count=\"3\" "
        "stride=\"3\"><param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/><param name=\"Z\" "
        "type=\"float\"/></accessor></technique_common></source><vertices id=\"v\"><input semantic=\"POSITION\" "
        "source=\"#p\"/></vertices><triangles count=\"1\"><input semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/>"
        "<p>0 1 2</p></triangles></mesh></geometry></library_geometries><library_visual_scenes><visual_scene id=\"s\">"
        "<node id=\"n\"><translate>2 0 0</translate><instance_geometry url=\"#g\"/></node></visual_scene>"
        "</library_visual_scenes><scene><instance_visual_scene url=\"#s\"/></scene></COLLADA>";
    for (const auto& [unit, size] : {std::pair(0.0, 25.4F), std::pair(1.0, 1.0F)}) {
        ASSERT_FALSE(Contains(Read("d.dae", dae, unit), "problem")) << Read("d.dae", dae, unit);
        EXPECT_FLOAT_EQ(m_model.components[0].mesh->GetBox().GetMax().x, size);
    }
}

TEST_F(ProductImportTest, ReadsNamesAndUnitOf3mf)
{
    const std::string front =
        "<model unit=\"centimeter\" xmlns=\"http://schemas.microsoft.com/3dmanufacturing/core/2015/02\">"
        "<resources>";
    // So long that the names of the objects are not in the first piece that is read.
    const std::string filling = "<!--" + std::string(65530 - front.size(), 'x') + "-->";
    const std::string rest =
        "<object id=\"1\" name=\"Eye &amp;/nut\"><mesh><vertices><vertex x=\"0\" y=\"0\" z=\"0\"/><vertex x=\"1\" "
        "y=\"0\" "
        "z=\"0\"/><vertex x=\"0\" y=\"1\" z=\"0\"/></vertices><triangles><triangle v1=\"0\" v2=\"1\" v3=\"2\"/>"
        "</triangles></mesh></object><object id=\"2\" name=\"Pair\"><components><component objectid=\"1\"/><component "
        "objectid=\"1\" transform=\"1 0 0 0 1 0 0 0 1 2 0 0\"/></components></object></resources><build><item "
        "objectid=\"2\"/></build></model>";
    const std::string relations =
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"><Relationship "
        "Target=\"/3D/m.model\" Id=\"r\" Type=\"http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel\"/>"
        "</Relationships>";
    std::string problem;
    const std::string path = m_folder.Write("m.3mf", "");
    ASSERT_TRUE(luhost::io::ZipPackageFormat().Write(
        path, {{"_rels/.rels", relations}, {"3D/m.model", front + filling + rest}}, problem))
        << problem;
    ASSERT_TRUE(m_reader.ReadProduct(path, 0.0, m_model, problem)) << problem;
    EXPECT_EQ(Outline(m_model), "Eye &/nut*1\nPair Eye &_nut=0@0,0,0 Eye &_nut-2=0@20,0,0\nm Pair=1@0,0,0\n");
}

TEST_F(ProductImportTest, OneMeshOfTheWholeFileKeepsItsFaces)
{
    const std::string nodes = R"({"children":[1,2]},{"mesh":0,"translation":[1,0,0]},{"mesh":0,"scale":[-1,1,1]})";
    std::string problem;
    const auto mesh = m_reader.Read(m_folder.Write("two.gltf", Gltf(nodes)), problem);
    ASSERT_TRUE(mesh) << problem;
    EXPECT_EQ(mesh->GetBox().GetMin().x, -1000.0F);
    EXPECT_EQ(mesh->GetBox().GetMax().x, 2000.0F);
    EXPECT_EQ(mesh->GetIndices(), (std::vector<std::uint32_t>{0, 1, 2, 3, 5, 4})) << "a mirror turns its triangle over";
}

TEST_F(ProductImportTest, TellsWhatIsWrongWithAFile)
{
    const std::string ply = "ply\nformat binary_little_endian 1.0\nelement vertex 4000000000\nproperty float x\n"
                            "property float y\nproperty float z\nelement face 0\nend_header\n";
    m_folder.Write("outside/secret.bin", std::string(36, 'x'));
    std::vector<std::tuple<const char*, std::string, const char*>> cases = {
        {"empty.glb", "", "it is empty"},
        {"part.step", "ISO-10303", "ends in none of"},
        {"none", "x", "ends in none of"},
        {"cut.glb", "glTF\2", "it is no glb file"},
        {"cut.gltf", Gltf(R"({"mesh":0})").substr(0, 300), ""},
        {"cut.dae", "<COLLADA><library", ""},
        {"cut.ply", "ply\nformat ascii 1.0\nelement vertex 3\n", "its header has no end"},
        {"junk.3mf", "PK\3\4junk", ""},
        {"self.gltf", Gltf(R"({"mesh":0,"children":[0]})"), "recursive"},
        {"ring.gltf", Gltf(R"({"children":[1]},{"mesh":0,"children":[2]},{"children":[1]})"), "recursive"},
        {"deep.gltf", Gltf(Chain(300, 1)), "nested more than 200 levels"},
        {"deeper.gltf", Gltf(Chain(200000, 1)), ""},
        {"child.gltf", Gltf(R"({"mesh":0,"children":[9]})"), "out of bounds"},
        {"nothing.gltf", Gltf(R"({"name":"light"})"), "no surface"},
        {"flat.gltf", Gltf(R"({"children":[1]},{"name":"f","mesh":0,"scale":[1,0,1]})"), "\"f\" is not sound"},
        {"far.gltf", Gltf(R"({"children":[1]},{"mesh":0,"translation":[1e30,0,0]})"), "no place within"},
        {"inf.gltf", Gltf(R"({"children":[1]},{"mesh":0,"translation":[1e300,0,0]})"), "is not sound"},
        {"nan.obj", "v nan 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "vertex 0 is at no place"},
        {"big.obj", "v 1e20 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", "within a thousand kilometres"},
        {"index.obj", "v 0 0 0\nf 1 2 3\n", ""},
        {"count.gltf", Gltf(R"({"mesh":0})", "4000000000"), "out of range"},
        {"up/escape.gltf", Gltf(R"({"mesh":0})", "3", "../outside/secret.bin"), "not beside it"},
        {"absent.gltf", Gltf(R"({"mesh":0})", "3", "absent.bin"), "\"absent.bin\""},
    };
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // The sanitizers need more addresses than a limit would leave them.
    cases.emplace_back("laughs.gltf", Gltf(Chain(40, 2)), "memory");
    cases.emplace_back("count.ply", ply, "memory");
#endif
    ImportLimits limits;
    limits.memoryBytes = std::uint64_t{512} << 20;
    limits.seconds = 20;
    const ModelReader reader(IMPORT_PROGRAM, limits);
    for (const auto& [name, bytes, reason] : cases) {
        std::string problem;
        EXPECT_FALSE(reader.ReadProduct(m_folder.Write(name, bytes), 0.0, m_model, problem)) << name;
        EXPECT_TRUE(Contains(problem, reason)) << name << ": " << problem;
        EXPECT_TRUE(m_model.components.empty());
    }
    std::string problem;
    EXPECT_FALSE(reader.ReadProduct(m_folder.Path("gone.glb"), 0.0, m_model, problem));
    EXPECT_EQ(problem, "there is no such file");
    std::filesystem::create_directory(m_folder.Path("folder.glb"));
    EXPECT_FALSE(reader.ReadProduct(m_folder.Path("folder.glb"), 0.0, m_model, problem));
    limits.maximumTriangles = 1;
    EXPECT_FALSE(ModelReader(IMPORT_PROGRAM, limits)
                     .ReadProduct(m_folder.Write("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nf 3 2 1\n"), 0.0,
                                  m_model, problem));
    EXPECT_EQ(problem.substr(problem.find("there")), "there are more than 1 triangles");
}

/// Stands in for a reader that a hostile file has taken over.
TEST_F(ProductImportTest, TrustsNothingThatTheReaderAnswers)
{
    const std::string head("lusym product 1\nm", 17);
    const auto number = [](std::uint64_t value) {
        std::string bytes;
        for (int i = 0; i < 8; ++i) {
            bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
        }
        return bytes;
    };
    const std::string none(8, '\0');
    m_folder.Write("empty", "");
    m_folder.Write("other", "GIF89a");
    m_folder.Write("meshes", head + number(~0ULL));
    m_folder.Write("mesh", head + number(1) + number(4) + "ply\n" + none);
    m_folder.Write("components", head + none + number(1ULL << 60));
    m_folder.Write("shows", head + none + number(1) + none + number(1) + none);
    m_folder.Write("uses", head + none + number(1) + none + none + number(1ULL << 40));
    m_folder.Write("rest", head + none + number(1) + none + none + none + "x");
    const std::pair<std::string, const char*> cases[] = {
        {"cat empty", "no product"},
        {"cat other", "no product"},
        {"cat meshes", ""},
        {"cat mesh", "no mesh"},
        {"cat components", ""},
        {"cat shows", ""},
        {"cat uses", ""},
        {"cat rest", ""},
        {"exit 7", "exit code 7"},
        {"kill -SEGV $$", "broke down"},
        {"exec yes", "takes more than 1 MB"},
        {"exec sleep 60", "takes longer to read than 3 seconds"},
    };
    const std::string model = m_folder.Write("m.obj", "v 0 0 0\n");
    ImportLimits limits;
    limits.seconds = 1;
    limits.memoryBytes = 1U << 20U;
    const auto start = std::chrono::steady_clock::now();
    for (const auto& [command, reason] : cases) {
        const std::string program =
            m_folder.Write("program", "#!/bin/sh\ncd '" + m_folder.Path() + "'\n" + command + "\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        std::string problem;
        EXPECT_FALSE(ModelReader(program, limits).ReadProduct(model, 0.0, m_model, problem)) << command;
        EXPECT_FALSE(problem.empty());
        EXPECT_TRUE(Contains(problem, reason)) << command << ": " << problem;
        EXPECT_TRUE(m_model.components.empty()) << command;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    std::string problem;
    EXPECT_FALSE(ModelReader(m_folder.Path("no-program")).ReadProduct(model, 0.0, m_model, problem));
    EXPECT_TRUE(Contains(problem, "cannot be started"));
}

} // namespace

} // namespace test
