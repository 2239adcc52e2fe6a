#pragma once

#include "annotations2d/Symbol2DInfo.h"
#include "plugin/Export.h"

#include <luannotations/Annotation.h>
#include <luk/illustration/SymbolTemplateHolder.h>

#include <cstdint>
#include <string>
#include <vector>

namespace dg
{
class Camera3D;
}

namespace luk::illustration
{
class AssociativeObjectObserver;
class SymbolTemplate;
} // namespace luk::illustration

namespace luk::illustration2d
{
class Stamp2D;
}

namespace lumk
{
class Stamp;
}

namespace lusymbols
{
class PartslibraryImageItem;
}

namespace luannotations
{

/// A picture of the symbol library, placed as a stamp on a page or over a 3D view.
///
/// Use: make it, give it its properties (SetSymbolInfo, or InitializeFromSerializedContent for a saved one) and, if
/// somebody waits, an event (SetEvent), then AttachScene. The stamp is made at once and is seen when its picture has been
/// loaded, which the event pump of the kernel tells; a picture that cannot be loaded leaves a stamp without one. On a page
/// CreateAnnotation2D makes the element that stands for the symbol.
///
/// A symbol that is bound to an entry of the library follows the entry's name, title, description and tags, and loads
/// the entry's picture when that becomes another file. Meanwhile IsSourceUpdated is true and width and height hold -0.01,
/// "not known yet". Then the old width is kept, and the height follows the new picture; a load that fails leaves picture
/// and size as they were.
///
/// Frames: width and height are half of what is seen: the stamp reaches from centre - (width, height) to
/// centre + (width, height), in units of the page or of the scene.
///
/// Ownership: counted. Loads hold the symbol until they end. The entry knows the symbol by a plain pointer, which the
/// destructor takes back. A copy shares markup, scene, pending event, page element and template observer of its original
/// and is neither a user of the template nor told of its changes until it is attached.
///
/// Threads and locks: belongs to the host thread. [write lock] AttachScene, DetachScene, SetSymbolInfo,
/// InitializeFromSerializedContent; [read lock] Visit, Flatten, Clone.
///
/// Errors: none is reported but by results. Every part of the host may be missing; what needs it is then left out.
class LUSYMBOLS_API Symbol2D : public Annotation
{
public:
    using SequencerTags = std::vector<du::SmartPtr<luk::illustration::SequencerTag>>;

    /// Black, 60 by 60, without a picture and bound to nothing.
    Symbol2D();
    explicit Symbol2D(const Symbol2DInfo& record);
    Symbol2D(const Symbol2D& other);
    Symbol2D& operator=(const Symbol2D&) = delete;
    ~Symbol2D() override;

    /// A symbol of the same properties that counts as read from a file.
    du::SmartPtr<luk::Annotation> Clone() override;

    /// Takes over the record, all but its image: the symbol keeps its own and looks for the record's picture file.
    ///
    /// What a stamp shows already stays until the symbol is attached again or Initialise loads the picture. A template
    /// change under way is given up.
    void SetSymbolInfo(const Symbol2DInfo& record);

    std::string GetTitle() const;
    void SetTitle(const std::string& title, bool showInTooltip);
    bool ShowTooltipTitle() const { return m_info.showTooltipTitle; }
    std::string GetDescription() const;
    void SetDescription(const std::string& description, bool showInTooltip);
    bool ShowTooltipDescription() const { return m_info.showTooltipDescription; }

    const dg::Color& GetFillColor() const { return m_info.fillColor; }
    const dg::Color& GetLineColor() const { return m_info.lineColor; }
    int GetLineWidth() const { return m_info.lineWidth; }
    int GetLineStipple() const { return m_info.lineStipple; }
    float GetTransparency() const { return m_info.transparency; }
    bool IsScreenSpace() const { return m_info.screenSpace; }
    bool IsBillboard3D() const { return m_info.isBillboard3D; }
    int GetAnchor() const { return m_info.anchor; }
    bool GetReverse() const { return m_info.reverse; }
    void SetReverse(bool reverse);
    bool GetFlipHorizontally() const { return m_info.flipHorizontally; }
    void SetFlipHorizontally(bool flip);
    /// Seen from the next load on.
    int GetRotateLeft() const { return m_info.rotateLeft; }
    void SetRotateLeft(int degrees) { m_info.rotateLeft = degrees; }
    int GetRotateRight() const { return m_info.rotateRight; }
    void SetRotateRight(int degrees) { m_info.rotateRight = degrees; }
    int GetPageNum() const override { return m_info.pageNum; }
    void SetPageNum(int pageNum) override;

    /// What the last step stored: the size of a record as it is, half the pixel size after a load.
    void GetOrigSize(float& width, float& height) const;
    void SetOrigSize(float width, float height);

    bool IsSourceUpdated() const { return m_sourceUpdated; }
    void SetSourceUpdated(bool updated) { m_sourceUpdated = updated; }

    void GetSequencerTags(SequencerTags& tags) const { tags = m_info.sequencerTags; }
    void SetSequencerTags(const SequencerTags& tags) { m_info.sequencerTags = tags; }

    du::Symbol GetImageName() const { return m_info.imageName; }
    du::Symbol GetImageFileName() const { return m_info.imageFileName; }
    du::SmartPtr<luk::Image> GetImage() const { return m_info.image; }
    du::Symbol GetIconName() const override;
    const luk::illustration::SymbolTemplateHolder& GetTemplateHolder() const { return m_templateHolder; }
    bool IsZoomable() const override { return true; }

    bool AttachScene(const du::SmartPtr<luk::Scene>& scene) override;
    bool DetachScene() override;
    /// The event is completed once the symbol is seen, or cannot be; it replaces an earlier one.
    void SetEvent(du::SmartPtr<luk::AsyncEvent> event) override;
    void HideAnnotation() override;
    void ShowAnnotation() override;

    dg::DBox GetBBox() const override;
    ManipulationType GetManipulationTypes() const override;
    bool MarkupUpdated(const du::SmartPtr<luk::Markup>& markup, const du::SmartPtr<luk::MarkupShadow>& shadow,
                       const du::SmartPtr<luk::Operation>& operation) override;
    dg::FVec3 GetMarkupSize(unsigned int index) const override;
    void SetMarkupSize(unsigned int index, const dg::FVec3& size) override;
    dg::Location GetMarkupLocation(unsigned int index) const override;
    void SetMarkupLocation(unsigned int index, const dg::Location& location) override;
    du::SmartPtr<luk::MarkupShadow> GetMarkupShadow(unsigned int index) override;
    /// What the stamp with its frame covers; a point at the origin when nothing of it can be projected.
    dg::DBox2D GetMarkupPixelBBox(const dg::Pipeline& pipeline, const lucontext::Context2D& context,
                                  int resolution) const override;

    void CreateAnnotation2D(const du::SmartPtr<luk::Scene>& scene) override;
    void CompleteAnnotation2D(const du::SmartPtr<luk::Scene>& scene,
                              const du::SmartPtr<luk::AsyncEvent>& event) override;

    void Visit(luk::SerializedContentElement& element) override;
    bool Flatten(luk::SerializedContentElement& element, const FlattenMatrices& matrices,
                 const luk::InstanceCheck& check, const dg::Pipeline& pipeline) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                         du::SmartPtr<luk::AnnoIdPathMapper> mapper) override;

    /// Loads the picture, also again.
    void Initialise();
    /// @param parent completed after the load; may be null
    void LoadImage(luk::AsyncEvent* parent);
    /// A load has ended.
    /// @param onStamp whether the picture has been turned and put on the stamp already
    void OnImageLoaded(du::SmartPtr<luk::Image> image, bool onStamp);

    /// @param[out] url of the picture file; untouched when the result is false
    /// @return false when the file name is no single component and, where documents are authored, when there is no file
    bool GetImageFromTempDir(du::Symbol& url) const;
    void DeleteTempDir();

    /// Binds the symbol to an entry; an index that names no image entry unbinds it, and kNoTemplate changes nothing.
    void AssignTemplate(std::uint64_t index);
    du::SmartPtr<lusymbols::PartslibraryImageItem> GetSymbolTemplateById() const;
    /// @param item null for the entry whose id the symbol has
    bool UpdateAssociativeObject(const du::SmartPtr<lusymbols::PartslibraryImageItem>& item);
    void RegisterTemplateObserver();
    void UnregisterTemplateObserver();
    void CheckForTemplateUpdate();
    /// @param previousWidth to be kept; the height follows the picture
    void CompleteUpdateStamp(const std::string& fileName, float previousWidth);

    /// @param box on the page
    void ApplyExtents2D(const dg::DBox2D& box);
    /// Sizes the stamp so that view 0 of the scene shows the picture pixel by pixel.
    void SetMarkupSizeAsImage();
    void SetToOriginalSize();
    bool IsOriginalSize() const;

    /// Turns the picture clockwise by the sum of both angles, in whole quarter turns.
    void SetImageRotation(int rightDegrees, int leftDegrees);
    void SetStampImage();
    /// In pixels; -1 without a picture.
    int GetImageWidth() const;
    int GetImageHeight() const;

private:
    friend class SymbolAnnotation;

    /// A load of the entry's new picture, and what to go back to when it fails.
    struct TemplateLoad {
        std::uint64_t number = 0; ///< tells the load that counts from those that it replaced
        du::Symbol fileName;      ///< of the new picture
        float width = 0.0F;
        float height = 0.0F;
        du::SmartPtr<luk::Image> image;        ///< null when no load is under way
        du::SmartPtr<luk::AsyncEvent> waiting; ///< of an attachment that found the load under way
    };

    void InitializeAnnotation();
    void ConfigureStamp();
    void ReleaseTemplate();
    void UnregisterConsumer();
    bool ObservesTemplate() const;
    void BindTemplateAtAttach();
    void CheckForUpdateOf(const du::SmartPtr<luk::illustration::AssociativeObject>& related);
    bool TakeTextsAndTags(const lusymbols::PartslibraryImageItem& item, bool& notify);
    bool StartTemplateLoad(const lusymbols::PartslibraryImageItem& item);
    static void FinishTemplateLoad(du::SmartPtr<Symbol2D> symbol, std::uint64_t number, const std::string& fileName,
                                   float previousWidth, int status, const du::SmartPtr<luk::AsyncEvent>& parent);
    bool RestoreBeforeTemplateLoad(const TemplateLoad& before, const du::SmartPtr<luk::AsyncEvent>& parent);
    void AbandonTemplateLoad();
    void TakeNaturalSize();
    void ShowStamp();
    void UpdateStampVisibility();
    void UpdateStamp2DExtents();
    void UpdateStamp2DPicture(const du::SmartPtr<luk::Image>& image);
    void UpdateStamp2DTexts();
    float GetHeightPerWidth() const;
    dg::DVec3 GetAxis(const dg::Camera3D& camera, int axis) const;
    void NotifySymbolChanged();
    void SetDirty();
    void SerializeContent(luk::SerializedContentElement& element, const luk::InstanceCheck* check,
                          const dg::Pipeline* pipeline);
    void SerializeBox(luk::SerializedContentElement& element, const dg::Pipeline* pipeline) const;
    void SerializeTemplate(luk::SerializedContentElement& element) const;

    static bool ExtractSymbolsFromLuzFile(du::Symbol& url, const du::Symbol& fileName);

    Symbol2DInfo m_info;
    du::SmartPtr<lumk::Stamp> m_markup;
    du::SmartPtr<luk::Scene> m_scene;
    float m_origWidth = 0.0F;
    float m_origHeight = 0.0F;
    bool m_sourceUpdated = false;
    du::SmartPtr<luk::AsyncEvent> m_pendingEvent;
    std::string m_tempDir; ///< of this symbol alone, deleted after the load; empty when there is none
    du::SmartPtr<luk::illustration2d::Stamp2D> m_stamp2D;
    bool m_hasTemplate = false;
    luk::illustration::SymbolTemplateHolder m_templateHolder;
    du::SmartPtr<luk::illustration::AssociativeObjectObserver> m_templateObserver;
    du::SmartPtr<luk::illustration::SymbolTemplate> m_consumedTemplate; ///< whose user the symbol is
    TemplateLoad m_templateLoad;
};

} // namespace luannotations
