#pragma once

#include "Trial.h"

#include <luhost/Session.h>
#include <luk/AsyncEvent.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/SerializedContentElement.h>
#include <luk/Tree.h>

#include <memory>
#include <string>

namespace luk
{
class Scene;
class ShapeScene;
} // namespace luk

namespace luk::illustration2d
{
class Scene2D;
}

namespace lusym::check
{

using AnnotationPtr = du::SmartPtr<luk::Annotation>;
using Element = luk::SerializedContentElement;

/// A host session in which a plug-in is at work: a product of an assembly "/a" with the parts "x" and "y" and of a part "/b",
/// shown in a scene, a page, and a library with the picture entry "picture" and the shape entry "shape".
///
/// In the temporary folder of the session there are pictures, "one.pic" and "two.pic", and shapes, "one.shp" and "two.shp".
///
/// *Rationale:* pictures and shapes are of a format of its own, so that nothing depends on decoders.
class Stage
{
public:
    explicit Stage(Trial& trial);
    /// Closes what is still open.
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    const du::SmartPtr<luk::ShapeScene>& GetScene() const noexcept { return m_scene; }
    const du::SmartPtr<luk::illustration2d::Scene2D>& GetPage() const noexcept { return m_page; }
    /// Where an annotation of this type belongs: the page for those that are drawn on it, else the scene.
    du::SmartPtr<luk::Scene> PlaceOf(const std::string& type) const;

    /// A new annotation that has read the content, in no scene. Null, and told, when there is none.
    AnnotationPtr Read(const std::string& type, const Element& content);
    /// The same, in the set of its place, attached to it, with everything loaded.
    AnnotationPtr Place(const std::string& type, const Element& content);
    AnnotationPtr Place(const std::string& type);
    void Attach(const AnnotationPtr& annotation, const std::string& type);
    /// Takes it out of its set, which detaches it.
    static void Remove(const AnnotationPtr& annotation);

    /// What the annotation saves; an element without a name when it saves nothing.
    static Element Save(const AnnotationPtr& annotation);

    /// Delivers until nothing is pending any more.
    static void Pump();

    /// Loads a library with both entries into the collection, or changes them in it.
    /// @param file "one" or "two": which picture and which shape the entries name
    void LoadLibrary(const std::string& title, const std::string& file);
    static luk::illustration::SymbolTemplateCollection& GetCollection();

    /// A path in the folder into which the session unpacks pictures and shapes.
    std::string SymbolsPath(const std::string& file) const;
    /// A path in the folder of this trial. @return the path, with the text in a file there
    std::string Write(const std::string& file, const std::string& text) const;

    /// Closes the scenes, and lets go of them.
    void CloseScenes();
    /// @return what is left of it
    luhost::Session::LeftOver EndSession();

private:
    void MakeProduct();

    Trial& m_trial;
    std::unique_ptr<luhost::Session> m_session;
    du::SmartPtr<luk::Tree> m_tree;
    du::SmartPtr<luk::ShapeScene> m_scene;
    du::SmartPtr<luk::illustration2d::Scene2D> m_page;
};

/// One whole life of symbols of every type, in a session of its own: made, read, placed, copied, saved, changed with their
/// library entries and removed.
void LiveThrough(Trial& trial);

/// Content that makes a symbol follow its library entry. Several symbols may have it at once.
Element BoundContent(const std::string& type);

/// Runs the same on eight threads that begin together.
void OnEightThreads(const std::function<void(unsigned int number)>& work);

/// An event that tells how often, and with what, it was completed.
class Waiting : public luk::AsyncEvent
{
public:
    void OnCompleted(int status) override
    {
        ++m_completions;
        m_status = status;
        if (m_deed) {
            m_deed();
        }
    }
    int GetCompletions() const noexcept { return m_completions; }
    int GetLastStatus() const noexcept { return m_status; }
    void SetDeed(std::function<void()> deed) { m_deed = std::move(deed); }

private:
    std::function<void()> m_deed;
    int m_completions = 0;
    int m_status = 0;
};

} // namespace lusym::check
