#include "luk_illustration/Entry.h"
#include "support/Contains.h"
#include "support/Links.h"
#include "support/SessionTest.h"

#include <luhost/Document.h>
#include <luk/AnnoSet.h>
#include <luk/AnnotationContentVisitor.h>
#include <luk/illustration2d/Lines2D.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/illustration2d/Stamp2D.h>
#include <luk/SerializedContentElement.h>
#include <luk/View.h>
#include <luk/World.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <sstream>

namespace test
{

namespace
{

using luhost::Document;
using luhost::PackageEntry;
using luk::SerializedContentElement;

constexpr std::uint64_t kNone = std::numeric_limits<std::uint64_t>::max();

/// Keeps its text, its picture and the index of its template, as a symbol does.
class Note : public luk::Annotation
{
public:
    Note(const std::string& noteText = {}, std::uint64_t index = kNone) : text(noteText), templateIndex(index)
    {
        SetClass(du::Symbol("note"));
    }

    void Visit(SerializedContentElement& element) override
    {
        SerializedContentElement& own = element.StartChild(GetClass());
        luk::Annotation::Visit(own);
        own.AddProperty(du::Symbol("text"), text);
        own.AddProperty(du::Symbol("picture"), picture);
        if (templateIndex != kNone) {
            own.AddProperty(du::Symbol("templateIndex"), templateIndex);
        }
        SerializedContentElement* inner = &own;
        for (int i = 0; i < depth; ++i) {
            inner = &inner->StartChild(du::Symbol("level"));
        }
    }

    bool InitializeFromSerializedContent(const SerializedContentElement* element) override
    {
        class Visitor : public luk::Annotation::SerializedContentVisitor
        {
        public:
            explicit Visitor(Note& read) : SerializedContentVisitor(read), note(read) {}
            bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override
            {
                if (key == du::Symbol("text") || key == du::Symbol("picture")) {
                    (key == du::Symbol("text") ? note.text : note.picture) = value;
                    return true;
                }
                return SerializedContentVisitor::VisitSymbol(key, value);
            }
            bool VisitUint64(const du::Symbol&, std::uint64_t value) override
            {
                note.templateIndex = value;
                return true;
            }
            Note& note;
        };
        Visitor visitor(*this);
        element->Visit(visitor, true);
        return text != du::Symbol("refuse");
    }

    bool AttachScene(const du::SmartPtr<luk::Scene>& scene) override
    {
        s_attached += text.GetText();
        return luk::Annotation::AttachScene(scene);
    }

    void CreateAnnotation2D(const du::SmartPtr<luk::Scene>& scene) override
    {
        for (const bool isDerived : {true, false}) {
            const auto stamp = du::MakeCounted<luk::illustration2d::Stamp2D>();
            stamp->SetIDPath(GetIDPath());
            stamp->SetDerivedFromSymbol(isDerived);
            du::DynamicCast<luk::illustration2d::Scene2D>(scene)->GetDocument()->AppendNode(stamp);
        }
    }

    du::Symbol text;
    du::Symbol picture;
    std::uint64_t templateIndex;
    int depth = 0;
    static inline std::string s_attached; ///< texts, in the order of attaching
};

/// Packages in memory.
class Packages : public luhost::PackageFormat
{
public:
    bool Read(const std::string& path, std::vector<PackageEntry>& entries, std::string& error) const override
    {
        error = files.count(path) == 0 ? "no such package" : "";
        for (const auto& [name, bytes] : files[path]) {
            entries.push_back({name, bytes});
        }
        return error.empty();
    }
    bool Write(const std::string& path, std::vector<PackageEntry> entries, std::string& error) const override
    {
        error = isFull ? "full" : "";
        if (!isFull) {
            files[path].clear();
            for (PackageEntry& entry : entries) {
                EXPECT_TRUE(files[path].emplace(entry.name, entry.bytes).second) << entry.name;
            }
        }
        return !isFull;
    }

    mutable std::map<std::string, std::map<std::string, std::string>> files;
    bool isFull = false;
};

class DocumentTest : public SessionTest
{
protected:
    Document::Setup MakeSetup() const
    {
        const auto create = [](const std::string& word) {
            return word == "note" ? du::SmartPtr<du::RefCounted>(du::MakeCounted<Note>()) : nullptr;
        };
        return {create, m_packages};
    }

    std::unique_ptr<Document> Open(const std::string& path, bool withAnnotations = true)
    {
        std::string error;
        auto document = Document::Open(path, MakeSetup(), error);
        EXPECT_TRUE(document) << error;
        if (document && withAnnotations) {
            document->AttachAnnotations();
        }
        return document;
    }
    std::unique_ptr<Document> OpenXml(const std::string& xml)
    {
        m_packages->files["in"]["document.xml"] = xml;
        return Open("in");
    }

    const std::map<std::string, std::string>& Save(const Document& document)
    {
        std::string error;
        EXPECT_TRUE(document.Save("out", error)) << error;
        return m_packages->files["out"];
    }

    static du::SmartPtr<Note> Add(Document& document, const std::string& text, std::uint64_t index = kNone,
                                  const du::SmartPtr<luk::Scene>& scene = nullptr)
    {
        auto note = du::MakeCounted<Note>(text, index);
        EXPECT_TRUE(document.AddAnnotation(note, scene ? scene : document.GetScene()));
        return note;
    }
    static du::SmartPtr<Note> NoteAt(const Document& document, std::size_t index)
    {
        return du::DynamicCast<Note>(document.GetAnnotations().at(index));
    }

    void UseTemporaryFolder(const std::string& name)
    {
        std::filesystem::create_directories(m_folder.Path(name));
        m_config.temporaryDirectory = m_folder.Path(name);
        RestartSession();
    }

    std::shared_ptr<Packages> m_packages = std::make_shared<Packages>();
};

std::string Xml(const std::string& view, const std::string& rest = {})
{
    return "<document version='1'><view><annotations>" + view + "</annotations></view>" + rest + "</document>";
}

std::string NoteXml(const std::string& properties) { return "<element name='note'>" + properties + "</element>"; }

TEST_F(DocumentTest, SavedAndOpenedAndSavedAgainIsTheSameToTheByte)
{
    UseTemporaryFolder("one");
    m_folder.Write("one/Symbols/used.png", "picture");
    m_folder.Write("one/Symbols/unused.png", "picture");
    std::map<std::string, std::string> first;
    {
        const auto document = Document::Create(MakeSetup());
        dg::Camera3D camera;
        camera.SetOrthographic(0.1);
        camera.SetPerspective(60.5);
        camera.SetLocation(dg::Location());
        camera.SetViewport(800, 600);
        document->SetCamera(camera);
        document->SetLibraryText("<library/>");
        document->AddPage({100.5, 50.0});
        document->AddPage({});
        Add(*document, "a")->picture = du::Symbol("used.png");
        Add(*document, "b", kNone, document->GetPage(1))->Hide(false, nullptr, 0);
        first = Save(*document);
    }
    EXPECT_EQ(first.at("Symbols/used.png"), "picture");
    EXPECT_EQ(first.size(), 3u);
    UseTemporaryFolder("two");
    const auto document = Open("out", false);
    EXPECT_TRUE(document->GetProblems().empty());
    EXPECT_EQ(Save(*document), first) << "before the annotations are made";
    document->AttachAnnotations();
    EXPECT_EQ(Save(*document), first);
    EXPECT_EQ(m_folder.Read("two/Symbols/used.png"), "picture");
    EXPECT_EQ(document->GetLibraryText(), "<library/>");
    EXPECT_EQ(document->GetCamera().GetOrthographicWidth(), 0.1);
    EXPECT_FALSE(document->GetCamera().IsOrthographic());
    EXPECT_EQ(document->GetPage(0)->GetDocument()->GetWidth(), 100.5);
    EXPECT_EQ(document->GetPageOf(*NoteAt(*document, 0)), -1);
    EXPECT_EQ(document->GetPageOf(*NoteAt(*document, 1)), 1);
    EXPECT_FALSE(NoteAt(*document, 1)->IsVisible());
    EXPECT_EQ(NoteAt(*document, 1)->GetScene(), document->GetPage(1));
}

TEST_F(DocumentTest, WhatHangsOnAnotherAnnotationIsAttachedAfterIt)
{
    const std::pair<const char*, const char*> cases[] = {
        {"a b c", "abc"},     {"a>b b>c c", "cba"}, {"a b>a c>a", "abc"},         {"a>c>b b>none c", "cba"},
        {"a>a>/a b>b", "ab"}, {"a>b b>a c", "bac"}, {"a>b>c b>c>a c>a>b", "cba"},
    };
    const std::pair<int, std::string> others[] = {
        {0, ""}, {50, NoteXml("")}, {1, "<element name='note' more='1'></element>"}};
    for (std::size_t i = 0; i < std::size(others) * std::size(cases); ++i) {
        const auto& [notes, order] = cases[i / std::size(others)];
        const auto& [count, other] = others[i % std::size(others)];
        std::string xml;
        std::istringstream words(notes);
        for (std::string word; words >> word;) {
            std::istringstream parts(word);
            std::string name;
            std::getline(parts, name, '>');
            std::string content = "<symbol key='text' value='" + name + "'/><symbol key='ID' value='" + name + "'/>";
            for (std::string part; std::getline(parts, part, '>');) {
                content +=
                    "<element name='attachedToPart'><symbol key='attachedToPartId' value='/" + part + "'/></element>";
            }
            xml += NoteXml(content);
            for (int between = 0; between < count; ++between) {
                xml += other;
            }
        }
        for (const char quote : {'\'', '"'}) {
            std::replace(xml.begin(), xml.end(), '\'', quote);
            Note::s_attached.clear();
            const auto document = OpenXml(Xml(xml));
            EXPECT_EQ(Note::s_attached, order) << notes << ", between them " << count << " " << other;
            EXPECT_EQ(NoteAt(*document, 0)->text.GetText(), "a") << "drawn and saved in the order of the file";
        }
    }
}

TEST_F(DocumentTest, TemplatesAreFoundAgainByTheirIds)
{
    const auto fill = [](std::initializer_list<const char*> ids) {
        for (const char* const id : ids) {
            Collection::GetCollection()->AddAssociativeObject(MakeEntry(id));
        }
    };
    fill({"x", "y", "z"});
    {
        const auto document = Document::Create(MakeSetup());
        for (const std::uint64_t index : {2U, 0U, 2U}) {
            Add(*document, "n", index);
        }
        Add(*document, "wild", 77);
        EXPECT_EQ(document->GetUsedTemplateIds(), (std::vector<std::string>{"z", "x"}));
        Save(*document);
    }
    RestartSession();
    fill({"y", "z", "z"});
    const std::map<std::string, std::string> first = m_packages->files["out"];
    auto document = Open("out");
    EXPECT_EQ(NoteAt(*document, 0)->templateIndex, 1u);
    EXPECT_EQ(NoteAt(*document, 1)->templateIndex, kNone) << "\"x\" is not in this library";
    EXPECT_EQ(NoteAt(*document, 3)->templateIndex, kNone);
    EXPECT_EQ(document->GetUsedTemplateIds(), (std::vector<std::string>{"z", "x"}));
    Save(*document);
    document = Open("out");
    EXPECT_EQ(Save(*document), (std::map<std::string, std::string>(m_packages->files["out"])));
    EXPECT_TRUE(Contains(m_packages->files["out"]["document.xml"], "<template id=\"x\"/>"));

    // Once bound to something else it stays away from what it was bound to.
    NoteAt(*document, 1)->templateIndex = 0;
    EXPECT_EQ(document->GetUsedTemplateIds(), (std::vector<std::string>{"z", "y"}));
    NoteAt(*document, 1)->templateIndex = kNone;
    EXPECT_EQ(document->GetUsedTemplateIds(), std::vector<std::string>{"z"});
}

/// "kind name of holder, annotation, in where, not expected: count"
std::vector<std::string> UnknownOf(Document& document)
{
    document.FindExpectedTypes();
    std::vector<std::string> told;
    for (const Document::Unknown& each : document.GetUnknown()) {
        std::string& text = told.emplace_back(each.kind + " " + each.name);
        text += each.holder.empty() ? "" : " of " + each.holder;
        text += each.annotation.empty() ? "" : ", " + each.annotation;
        text += each.where.empty() ? "" : ", in " + each.where;
        text += each.expected.empty() ? "" : ", not " + each.expected;
        text += each.isKept ? ": " + std::to_string(each.count) : std::string(": lost");
    }
    return told;
}

TEST_F(DocumentTest, WhatIsNotUnderstoodIsWrittenAgainInItsPlace)
{
    const std::string index = "<uint64 key='templateIndex' value='1' w='0'/>";
    const std::string xml =
        "<document version='7' nextId='5' a='1'><early/><view b='2'><before/><camera c='3' projection='orthographic' "
        "width='1' fieldOfView='45' location='1 0 0 0 1 0 0 0 1 0 0 0' pixelWidth='0' pixelHeight='0'><lens/></camera>"
        "<annotations d='4'><element name='note' e='5'>" +
        index + "<int64 key='later'/></element><group/><element name='alien' f='6'><point key='p' value='1 2 nan'/>" +
        index +
        "<symbol key='pic' value='alien.png'/></element><element name='note'/></annotations><behind/></view>"
        "<pages g='7'><page width='10' height='20' h='8'><element name='misplaced'/></page><gap/></pages><pages/>"
        "<templates><template id='unused'/><template id='t' "
        "i='9'><in/></template><other/></templates><late>text</late></document>";
    m_packages->files["in"] = {{"extra/thing.bin", "kept"}, {"Symbols/alien.png", "p"}, {"Symbols/no/way.png", "q"}};
    const auto document = OpenXml(xml);
    EXPECT_EQ(document->GetUnknownAnnotationCount(), 1u);
    EXPECT_EQ(document->GetAnnotations().size(), 2u);
    const std::map<std::string, std::string> saved = Save(*document);
    EXPECT_EQ(saved.at("extra/thing.bin"), "kept");
    EXPECT_EQ(saved.at("Symbols/alien.png"), "p");
    EXPECT_EQ(saved.at("Symbols/no/way.png"), "q");
    std::size_t at = 0;
    const std::string& text = saved.at("document.xml");
    for (const char* const part : {"version=\"7\"",
                                   " a=\"1\"",
                                   "<early>",
                                   "<view b=\"2\"",
                                   "<before>",
                                   "<camera",
                                   " c=\"3\"",
                                   "<lens>",
                                   "<annotations d=\"4\"",
                                   "\"note\" e=\"5\"",
                                   "<int64 key=\"later\">",
                                   "\"templateIndex\" value=\"0\" w=\"0\"",
                                   "<group>",
                                   "\"alien\" f=\"6\"",
                                   "\"1 2 nan\"",
                                   "\"templateIndex\" value=\"0\"",
                                   "\"note\">",
                                   "<behind>",
                                   "<pages g=\"7\"",
                                   "<page width=\"10\" height=\"20\" h=\"8\"",
                                   "misplaced",
                                   "<gap>",
                                   "<pages></pages>",
                                   "<templates>",
                                   "<template id=\"t\" i=\"9\">\n      <in>",
                                   "<other>",
                                   "<late>text</late>"}) {
        at = text.find(part, at);
        ASSERT_NE(at, std::string::npos) << part << " in " << text;
    }
    EXPECT_EQ(Save(*Open("out")), saved);
    const std::vector<std::string> told = UnknownOf(*document);
    EXPECT_EQ(told, (std::vector<std::string>{"attribute a of document: 1",
                                              "element early of document: 1",
                                              "attribute b of view: 1",
                                              "element before of view: 1",
                                              "attribute c of camera: 1",
                                              "element lens of camera: 1",
                                              "attribute d of annotations, in the view: 1",
                                              "element group of annotations, in the view: 1",
                                              "element behind of view: 1",
                                              "attribute g of pages: 1",
                                              "attribute h of page, in page 1: 1",
                                              "element element of page, in page 1: 1",
                                              "element gap of pages: 1",
                                              "attribute i of template, in template \"t\": 1",
                                              "element in of template, in template \"t\": 1",
                                              "element other of templates: 1",
                                              "element late of document: 1",
                                              "entry , in Symbols/no/way.png: 2",
                                              "attribute e of element, s5: 1",
                                              "attribute w of templateIndex, s5: 1",
                                              "element int64, s5: 1",
                                              "annotation alien, in s6: 1"}));

    // What stood behind an annotation that is gone follows the one before.
    document->RemoveAnnotation(NoteAt(*document, 0));
    const std::string fewer = Save(*document).at("document.xml");
    EXPECT_LT(fewer.find("<group>"), fewer.find("alien"));
    EXPECT_LT(fewer.find("alien"), fewer.find("\"note\""));
}

/// A document of notes as it is saved, the last of them on pages.
std::string SavedXml(int count, std::size_t textBytes = 0)
{
    const auto note = [textBytes](int number) {
        const std::string text = std::to_string(number) + std::string(textBytes, 'x');
        return "      <element name=\"note\">\n        <symbol key=\"annoId\" value=\"s" + std::to_string(number) +
               "\"/>\n        <symbol key=\"text\" value=\"" + text +
               "\"/>\n        <element name=\"level\">\n        </element>\n      </element>\n";
    };
    std::string xml = "<document version=\"1\">\n  <view>\n    <annotations>\n";
    for (int number = 3; number <= count; ++number) {
        xml += note(number);
    }
    xml += "    </annotations>\n  </view>\n  <pages>\n";
    for (int page = 1; page <= 2; ++page) {
        xml += "    <page width=\"1\" height=\"2\"><annotations>\n" + note(page) + "</annotations></page>\n";
    }
    return xml + "  </pages>\n</document>";
}

std::string Replaced(std::string text, std::string_view what, std::string_view by)
{
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

class PlainAnnotationsTest : public DocumentTest
{
protected:
    /// What becomes of a document: why it is refused; or what is told of it, in which order it is attached, and what is saved.
    std::string Outcome(const std::string& xml)
    {
        std::string outcome;
        m_packages->files["in"]["document.xml"] = xml;
        Note::s_attached.clear();
        const auto document = Document::Open("in", MakeSetup(), outcome);
        if (!document) {
            return "refused";
        }
        const std::string unmade = Save(*document).at("document.xml");
        document->AttachAnnotations();
        for (const std::string& problem : document->GetProblems()) {
            outcome += problem + "\n";
        }
        for (const std::string& unknown : UnknownOf(*document)) {
            outcome += unknown + "\n";
        }
        return outcome + Note::s_attached + unmade + Save(*document).at("document.xml");
    }

    /// Any mention of what the annotations are marked by has the whole text parsed.
    std::string OutcomeWhenParsed(const std::string& xml) { return Outcome(xml + "<!--_annotations_read_-->"); }
};

TEST_F(PlainAnnotationsTest, AreReadAsTheParserWouldReadThem)
{
    const std::string plain = SavedXml(6);
    EXPECT_NE(Outcome(plain).find("345612"), std::string::npos) << Outcome(plain);
    const std::string fifth =
        plain.substr(plain.find("<element name=\"note\">\n        <symbol key=\"annoId\" value=\"s5"),
                     plain.find("</element>\n      <element") - plain.find("<element") + 10);
    ASSERT_TRUE(fifth.ends_with("</element>\n      </element>")) << fifth;
    for (const std::string& xml :
         {plain,
          Replaced(plain, fifth, "<!--" + fifth + "-->"),
          Replaced(plain, fifth, "<![CDATA[" + fifth + "]]>"),
          Replaced(plain, fifth, "<?a " + fifth + "?>"),
          Replaced(plain, fifth, "<group>" + fifth + "</group>"),
          Replaced(plain, fifth, "<element name=\"note\">" + fifth + "</element>"),
          Replaced(plain, fifth, "<element name=\"note\">\n      " + fifth + "</element>"),
          Replaced(plain, fifth, "<symbol key=\"" + fifth + "\"/>"),
          Replaced(plain, fifth, fifth + fifth),
          Replaced(plain, fifth, fifth.substr(0, fifth.size() - 10)),
          Replaced(plain, fifth, fifth + "</element>"),
          Replaced(plain, fifth, "</annotations><annotations>" + fifth),
          Replaced(plain, fifth, "text"),
          Replaced(plain, "\"5\"", "\"5&amp;\""),
          Replaced(plain, "\"5\"", "\"5\" more=\"1\""),
          Replaced(plain, "\"text\"", "\"text<annotations>\""),
          Replaced(plain, "symbol key=\"text\"", "float key=\"text\""),
          Replaced(plain, "\"s5\"", "\"s4\""),
          Replaced(plain, "<pages>", "<pages>" + plain.substr(plain.find("<annotations>"), 300)),
          Replaced(plain, "<view>", "<x><annotations>\n      " + fifth + "</annotations></x><view>"),
          Replaced(plain, "<view>", "<view a=\"<annotations>" + fifth + "\">"),
          Replaced(plain, "<annotations>", "<annotations a='>'>"),
          Replaced(plain, "<annotations>", "<annotations"),
          Replaced(plain, "</document>", ""),
          plain + "<element></element>",
          std::string("<annotations>")}) {
        EXPECT_EQ(Outcome(xml), OutcomeWhenParsed(xml)) << xml;
    }
    const std::string marked =
        Replaced(plain, fifth, "<element a=\"1\"/><_annotations_read_/><!--\n      " + fifth + "-->");
    EXPECT_NE(Outcome(marked).find("<_annotations_read_></_annotations_read_>"), std::string::npos);
}

TEST_F(PlainAnnotationsTest, OfALongTextAreReadInPartsWhereverTheyBegin)
{
    const std::string plain = SavedXml(560, 1000);
    const std::size_t middle = plain.find("      <element name=\"note\">", plain.size() / 2) - 1;
    const std::string expected = OutcomeWhenParsed(plain);
    EXPECT_EQ(Outcome(plain), expected);
    for (const std::string between :
         {"<!--\n      <element name=\"note\">\n      </element>-->", "<group>\n</group>",
          "\n      <element name=\"note\">\n      <element name=\"level\"></element></element>",
          "\n<element name=\"note\" more=\"1\"></element>"}) {
        std::string xml = plain;
        xml.insert(middle, between);
        EXPECT_TRUE(Outcome(xml) == OutcomeWhenParsed(xml)) << between;
    }
}

TEST_F(DocumentTest, TellsOnceForEachKindAndAnnotationWhatItDoesNotKnow)
{
    const std::string future = "<float key='glow' value='1'/><float key='glow' value='2'/>";
    const std::string wrong = "<int32 key='text' value='3'/><float key='size' value='big'/>";
    const auto document = OpenXml(Xml(NoteXml(future + wrong) + NoteXml(future + "<element name='halo'/>") +
                                      "<element name='alien'/><element name='alien'>" + wrong + "</element>"));
    EXPECT_TRUE(document->GetProblems().empty());
    EXPECT_EQ(UnknownOf(*document),
              (std::vector<std::string>{"value float \"size\" has the wrong value \"big\", s1: lost",
                                        "value float \"size\" has the wrong value \"big\", s4: lost",
                                        "float glow, s1: 2", "int32 text, s1, not symbol: 1", "float glow, s2: 2",
                                        "element halo, s2: 1", "annotation alien, in s3: 2"}));
    std::string many;
    for (int i = 0; i < 1500; ++i) {
        many += NoteXml(future);
    }
    const auto large = OpenXml(Xml(many));
    EXPECT_EQ(large->GetUnknown().size(), 1000u);
    EXPECT_EQ(large->GetUnlistedUnknownCount(), 1000u);
    EXPECT_EQ(UnknownOf(*large).back(), "float glow, s1000: 2");
}

TEST_F(DocumentTest, EveryAnnotationHasAnIdOfItsOwn)
{
    const std::string s1 = "<symbol key='annoId' value='s1'/>";
    auto document =
        OpenXml(Xml(NoteXml("") + NoteXml(s1) + NoteXml(s1) + "<element name='alien'>" + s1 + "</element>"));
    std::vector<std::string> ids;
    for (const auto& annotation : document->GetAnnotations()) {
        ids.push_back(annotation->GetIDPath().GetText());
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"s2", "s1", "s3"}));
    EXPECT_EQ(std::count_if(document->GetProblems().begin(), document->GetProblems().end(),
                            [](const std::string& problem) { return Contains(problem, "a second annotation"); }),
              2);

    // A copy gets a new one, what comes back keeps its own, and none is given again.
    const du::SmartPtr<Note> removed = NoteAt(*document, 2);
    const auto copy = du::MakeCounted<Note>(*removed);
    EXPECT_TRUE(document->AddAnnotation(copy, document->GetScene()));
    EXPECT_EQ(copy->GetIDPath().GetText(), "s5");
    EXPECT_TRUE(document->RemoveAnnotation(removed));
    EXPECT_FALSE(document->FindAnnotation("s3"));
    EXPECT_EQ(Add(*document, "new")->GetIDPath().GetText(), "s6");
    EXPECT_TRUE(document->AddAnnotation(removed, document->GetScene()));
    EXPECT_FALSE(document->AddAnnotation(removed, document->GetScene()));
    EXPECT_EQ(document->FindAnnotation("s3"), removed);
    document->RemoveAnnotation(copy);
    document->GetScene()->GetAnnoSet()->AddAnnotation(copy); // as undoing does it
    EXPECT_EQ(document->FindAnnotation("s5"), copy);
    Save(*document);
    document = Open("out");
    EXPECT_EQ(Add(*document, "newer")->GetIDPath().GetText(), "s7");
}

TEST_F(DocumentTest, OpensWhatItCanAndTellsTheRest)
{
    const std::pair<std::string, const char*> problems[] = {
        {Xml("", "<pages><page width='0' height='1'/></pages>"), "page 1 has no sound \"width\""},
        {Xml("", "<pages><page width='1' height='nan'/></pages>"), "page 1 has no sound \"height\""},
        {Xml("", "<templates><template/></templates>"), "template 0 has no id"},
        {"<document/>", "version"},
        {"<document version='99999999999999999999'/>", "newer"},
        {"<document version='1' nextId='-1'/>", "counter"},
        {"<document version='1'><view><camera projection='oblique'/></view></document>", "sound \"projection\""},
        {Xml("", "<view/>"), "a second \"view\""},
        {Xml(NoteXml("<symbol key='text' value='refuse'/>")), "refused"},
    };
    for (const auto& [xml, problem] : problems) {
        const auto document = OpenXml(xml);
        ASSERT_TRUE(document);
        const std::vector<std::string>& told = document->GetProblems();
        EXPECT_TRUE(std::any_of(told.begin(), told.end(), [&](const auto& text) {
            return text.find(problem) != text.npos;
        })) << problem;
        Save(*document);
        EXPECT_EQ(Save(*Open("out")), std::map(m_packages->files["out"]));
    }
    const std::pair<std::string, const char*> refused[] = {
        {"", "document.xml"}, {"<document>", "line 1"}, {"<drawing/>", "not \"document\""}};
    for (const auto& [xml, reason] : refused) {
        std::string error;
        m_packages->files["in"]["document.xml"] = xml;
        EXPECT_FALSE(Document::Open("in", MakeSetup(), error));
        EXPECT_TRUE(Contains(error, reason));
    }
    std::string error;
    m_packages->files["empty"];
    EXPECT_FALSE(Document::Open("empty", MakeSetup(), error));
    EXPECT_EQ(error, "the package has no \"document.xml\"");
    EXPECT_FALSE(Document::Open("none", MakeSetup(), error));
    EXPECT_EQ(error, "no such package");
}

TEST_F(DocumentTest, PicturesGoNowhereElse)
{
    namespace fs = std::filesystem;
    if (!test::kHasLinks) {
        GTEST_SKIP() << test::kWhyNoLinks;
    }
    UseTemporaryFolder("t");
    m_folder.Write("outside", "mine");
    m_folder.Write("t/Symbols/stale.png", "of another document");
    test::MakeLink(m_folder.Path("outside"), m_folder.Path("t/Symbols/link.png"));
    fs::create_directories(m_folder.Path("t/Symbols/folder.png/x"));
    m_packages->files["in"] = {{"Symbols/link.png", "1"},   {"Symbols/stale.png", "2"},
                               {"Symbols/folder.png", "3"}, {"Symbols/../up.png", "4"},
                               {"Symbols/a\\b.png", "5"},   {"Symbols/C:c.png", "6"},
                               {"Symbols/..", "7"},         {std::string("Symbols/n\0l", 11), "8"}};
    const std::map<std::string, std::string> entries = m_packages->files["in"];
    std::string notes;
    for (const auto& [name, bytes] : entries) {
        notes += NoteXml("<symbol key='picture' value='" + name.substr(8) + "'/>");
    }
    notes +=
        NoteXml("<symbol key='picture' value='../../outside'/>") + NoteXml("<symbol key='picture' value='late.png'/>");
    notes.erase(std::remove(notes.begin(), notes.end(), '\0'), notes.end());
    const auto document = OpenXml(Xml(notes));
    EXPECT_EQ(m_folder.Read("outside"), "mine");
    EXPECT_EQ(m_folder.Read("t/Symbols/link.png"), "1");
    EXPECT_EQ(m_folder.Read("t/Symbols/stale.png"), "2");
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(m_folder.Path("t")), {}), 5);

    // A picture that could not be unpacked is kept; a link among the pictures is no picture.
    test::MakeLink(m_folder.Path("outside"), m_folder.Path("t/Symbols/late.png"));
    std::map<std::string, std::string> saved = Save(*document);
    saved.erase("document.xml");
    EXPECT_EQ(saved, entries);

    fs::remove_all(m_folder.Path("t/Symbols"));
    test::MakeLink(m_folder.Path(), m_folder.Path("t/Symbols"));
    EXPECT_TRUE(Contains(Open("in")->GetProblems().back(), "could not be unpacked"));
    EXPECT_FALSE(fs::exists(m_folder.Path("link.png")));
}

std::string PageXml(const std::string& content)
{
    return Xml("", "<pages><page width='10' height='20'>" + content + "</page></pages>");
}

TEST_F(DocumentTest, LinesOfAPageAreSavedAsTheyAreAndGoWithTheirSymbol)
{
    const std::string look = " width='0.35' color='0 0 0 1'";
    const auto document =
        OpenXml(PageXml("<early/><drawing n='1'><new/><lines class='visible border' part='/a' symbol='s1' title='A "
                        "&amp; b' width='0.1' "
                        "dashes='1.6 1' color='0 0.5 0 1' m='2'><line points='1 2 3 4.5'/><arc/><line closed='true' "
                        "points='0 0 1e300 0 "
                        "-1 1'/></lines><newer/><lines classBase64='AQ=='" +
                        look + "><line points='1 2 3 4' thick='yes'/></lines></drawing><late/><annotations>" +
                        NoteXml("<symbol key='annoId' value='s1'/>") + "</annotations><later/>"));
    EXPECT_TRUE(document->GetProblems().empty());
    const std::map<std::string, std::string> saved = Save(*document);
    const std::string& text = saved.at("document.xml");
    std::size_t at = 0;
    for (const char* const part :
         {"<early>", "<drawing n=\"1\">", "<new>",
          "<lines class=\"visible border\" part=\"/a\" symbol=\"s1\" title=\"A &amp; b\" width=\"0.1\" "
          "dashes=\"1.6 1\" color=\"0 0.5 0 1\" m=\"2\">",
          "<line points=\"1 2 3 4.5\"/>", "<arc>", "<line closed=\"true\" points=\"0 0 1e+300 0 -1 1\"/>", "<newer>",
          "<lines classBase64=\"AQ==\" width=\"0.35\"", "thick=\"yes\"", "<late>", "<annotations>", "<later>"}) {
        at = text.find(part, at);
        ASSERT_NE(at, std::string::npos) << part << " in " << text;
    }
    EXPECT_EQ(Save(*Open("out")), saved);
    const auto& page = *document->GetPage(0)->GetDocument();
    EXPECT_TRUE(dynamic_cast<const luk::illustration2d::Lines2D*>(page.GetNodes().front().get()));
    EXPECT_EQ(page.GetNodes().size(), 4u);
    document->RemoveAnnotation(NoteAt(*document, 0));
    EXPECT_FALSE(Contains(Save(*document).at("document.xml"), "symbol=\"s1\""));

    const std::string line = "><line points='1 2 3 4'/></lines>";
    const std::pair<std::string, const char*> problems[] = {
        {"<lines" + look + "><line points='1 2 3'/></lines>", "at least two points"},
        {"<lines" + look + "><line points='1 2 nan 4'/></lines>", "at least two points"},
        {"<lines" + look + "><line points='1 2 3 1e999'/></lines>", "at least two points"},
        {"<lines" + look + "><line points='1 2 3 4'/><line/></lines>", "at least two points"},
        {"<lines width='0' color='0 0 0 1'" + line, "sound \"width\""},
        {"<lines width='1' color='red'" + line, "sound \"color\""},
        {"<lines dashes='1 -1'" + look + line, "sound \"dashes\""},
    };
    for (const auto& [lines, problem] : problems) {
        const auto bad = OpenXml(PageXml("<drawing>" + lines + "</drawing>"));
        ASSERT_EQ(bad->GetProblems().size(), 1u) << problem;
        EXPECT_TRUE(Contains(bad->GetProblems().front(), problem));
        EXPECT_TRUE(bad->GetPage(0)->GetDocument()->GetNodes().empty());
        const std::size_t size = Save(*bad).at("document.xml").size();
        EXPECT_GT(size, lines.size()) << "it is kept";
    }
}

TEST_F(DocumentTest, PagesTakeAnnotationsAndLetGoOfTheirStamps)
{
    auto document = Document::Create(MakeSetup());
    const auto world = luk::World::GetWorld();
    EXPECT_TRUE(world->GetContainer()->GetPrimaryStructure()->GetAnchor());
    const auto page = document->GetPage(document->AddPage({}));
    const auto kept = Add(*document, "kept", kNone, page);
    const auto moved = Add(*document, "moved", kNone, page);
    EXPECT_EQ(page->GetDocument()->GetNodes().size(), 4u);
    EXPECT_TRUE(document->AddAnnotation(moved, document->GetScene()));
    EXPECT_EQ(page->GetDocument()->GetNodes().size(), 3u) << "what a symbol did not make stays";
    EXPECT_EQ(document->GetPageOf(*moved), -1);
    EXPECT_EQ(document->GetAnnotations(), (std::vector<du::SmartPtr<luk::Annotation>>{moved, kept}));
    EXPECT_FALSE(document->AddAnnotation(moved, du::MakeCounted<luk::Scene>()));
    EXPECT_FALSE(document->AddAnnotation(nullptr, page));
    EXPECT_FALSE(document->RemoveAnnotation(du::MakeCounted<Note>()));
    document.reset();
    EXPECT_FALSE(world->GetContainer());
    EXPECT_FALSE(kept->GetScene());
}

TEST_F(DocumentTest, ASaveThatFailsSaysWhyAndLeavesTheOldDocument)
{
    const auto document = Document::Create(MakeSetup());
    const std::map<std::string, std::string> old = Save(*document);
    std::string error;
    const auto note = Add(*document, "deep");
    note->depth = 250;
    EXPECT_TRUE(document->Save("deep", error)) << error;
    EXPECT_EQ(Open("deep")->GetAnnotations().size(), 1u);
    note->depth = 256;
    EXPECT_FALSE(document->Save("out", error));
    EXPECT_TRUE(Contains(error, "nested too deep"));
    note->depth = 0;
    m_packages->isFull = true;
    EXPECT_FALSE(document->Save("out", error));
    EXPECT_EQ(error, "full");
    EXPECT_EQ(m_packages->files["out"], old);
}

} // namespace

} // namespace test
