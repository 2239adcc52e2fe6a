#include "PictureSeries.h"

#include "DocumentSource.h"
#include "OutputFile.h"
#include "PartState.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolState.h"

#include <luk/ShapeScene.h>

#include <algorithm>
#include <set>

namespace lusym
{

namespace
{

constexpr double kMillimetresPerInch = 25.4;
constexpr std::string_view kSaved = "saved";
constexpr std::string_view kPageWord = "{page}";
constexpr std::string_view kViewWord = "{view}";
constexpr std::string_view kNumberWord = "{n}";

std::string Replaced(std::string text, std::string_view word, const std::string& replacement)
{
    for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + replacement.size())) {
        text.replace(at, word.size(), replacement);
    }
    return text;
}

std::vector<PictureOrder> OrdersOfViews(const SeriesOptions& options)
{
    std::vector<PictureOrder> orders;
    for (const std::string& name : options.views) {
        PictureOrder& order = orders.emplace_back(PictureOrder{options.output, 0, name, options.view});
        order.view.view = luhost::render::StandardViewOf(name);
        order.output = Replaced(order.output, kViewWord, name);
        order.output = Replaced(order.output, kNumberWord, std::to_string(orders.size()));
    }
    return orders;
}

void TellPictureProblems(const std::vector<SymbolState>& states, const std::string& name, Progress& progress)
{
    for (const SymbolState& state : states) {
        if (state.isPicture && !state.fileProblem.empty()) {
            progress.Tell(Printable(name) + ":" + Printable(state.id) + ": warning: the picture " + Quote(state.file) +
                          " cannot be shown: " + Printable(state.fileProblem) +
                          ". The symbol is drawn as a crossed box.\n");
        }
    }
}

class Series
{
public:
    Series(const SeriesOptions& options, DocumentSource& source)
        : m_options(options), m_source(source), m_document(source.GetDocument()), m_progress(source.GetProgress())
    {
    }

    ExitCode Draw()
    {
        m_states = StatesOf(m_document);
        TellPictureProblems(m_states, m_options.name, m_progress);
        ExitCode fault = TakeOrders();
        if (fault == ExitCode::Done && !m_orders.empty() && m_orders.front().page == 0) {
            fault = ArrangeProduct();
        }
        return fault == ExitCode::Done ? DrawAll() : fault;
    }

private:
    ExitCode TakeOrders()
    {
        m_orders = OrdersOfViews(m_options);
        const auto pages = static_cast<int>(m_document.GetPageCount());
        if (!m_orders.empty()) {
            return ExitCode::Done;
        }
        if (m_options.page) {
            return TakePage(*m_options.page, pages);
        }
        if (m_options.output.find(kPageWord) != std::string::npos) {
            return TakeAllPages(pages);
        }
        if (pages > 0 && IsViewEmpty()) {
            return TakePage(1, pages);
        }
        SeriesOptions saved = m_options;
        saved.views = {std::string(kSaved)};
        m_orders = OrdersOfViews(saved);
        return ExitCode::Done;
    }

    bool IsViewEmpty() const
    {
        return PartsOf(m_document).empty() && std::ranges::count(m_states, 0, &SymbolState::page) == 0;
    }

    ExitCode TakePage(int page, int pages)
    {
        if (page > pages) {
            return Fail("there is no page " + std::to_string(page) + "; the document has " + std::to_string(pages) +
                        ". Name another one with --page.");
        }
        const std::string number = std::to_string(page);
        m_orders.push_back({Replaced(Replaced(m_options.output, kPageWord, number), kNumberWord, "1"), page, {}, {}});
        return ExitCode::Done;
    }

    ExitCode TakeAllPages(int pages)
    {
        for (int page = 1; page <= pages; ++page) {
            const std::string number = std::to_string(page);
            m_orders.push_back(
                {Replaced(Replaced(m_options.output, kPageWord, number), kNumberWord, number), page, {}, {}});
        }
        return pages > 0 ? ExitCode::Done : Fail("the document has no page. Leave {page} out to get the view.");
    }

    /// In the open document alone, which is never saved.
    ExitCode ArrangeProduct()
    {
        const auto parts = FindParts(m_source, m_options.hidden);
        if (parts.size() < m_options.hidden.size()) {
            return ExitCode::Failed;
        }
        {
            const luk::ShapeScene::UpdateBatch batch(*m_document.GetShapeScene());
            for (const auto& part : parts) {
                part->SetVisibility(false, true);
            }
        }
        m_source.WaitForLoads();
        std::string problem;
        if (m_options.explosion.factor > 0.0 && !ExplodeProduct(m_source, m_options.explosion, problem)) {
            return Fail(problem + ". Take a smaller factor for --explode.");
        }
        return ExitCode::Done;
    }

    ExitCode DrawAll()
    {
        ExitCode firstFault = ExitCode::Done;
        std::size_t done = 0;
        for (std::size_t index = 0; index < m_orders.size(); ++index) {
            m_progress.Step("drawing " + NameOf(m_orders[index]), index, m_orders.size());
            const ExitCode fault = DrawOne(m_orders[index]);
            done += fault == ExitCode::Done ? 1U : 0U;
            firstFault = firstFault == ExitCode::Done ? fault : firstFault;
        }
        return done > 0 && done < m_orders.size() ? ExitCode::PartOfBatchFailed : firstFault;
    }

    ExitCode DrawOne(const PictureOrder& order)
    {
        if (OutputFile::IsFile(order.output, m_options.name)) {
            m_progress.Tell("lusym: " + Printable(order.output) +
                            " is the document, which the picture would replace. Name another file with -o.\n");
            return ExitCode::Usage;
        }
        std::string bytes;
        std::string error;
        if (!MakeBytes(order, bytes, error)) {
            return Fail(NameOf(order) + " cannot be drawn: " + Printable(error) + HintFor(order, error));
        }
        OutputFile file(order.output);
        m_progress.Clear();
        if (!file.Write(bytes) || !file.Commit()) {
            m_progress.Tell("lusym: " + file.GetError() + "\n");
            return ExitCode::OutputNotWritable;
        }
        return ExitCode::Done;
    }

    bool MakeBytes(const PictureOrder& order, std::string& bytes, std::string& error)
    {
        luhost::render::Drawing drawing;
        if (order.page > 0) {
            drawing = DrawPageOf(m_document, order.page);
        } else if (!DrawViewOf(order, drawing, error)) {
            return false;
        }
        drawing.background = m_options.background;
        drawing.title = DrawingTitle(m_document, NameOf(order));
        return WriteDrawing(drawing, m_options.format, m_options.view.pixelWidth, m_options.view.pixelHeight, bytes,
                            error);
    }

    bool DrawViewOf(const PictureOrder& order, luhost::render::Drawing& drawing, std::string& error)
    {
        if (!m_view) {
            m_view.emplace(m_document, m_options.format != PictureFormat::Png);
            for (const std::string& problem : m_view->GetProblems()) {
                m_progress.Tell(Printable(m_options.name) + ":" + Printable(problem) + ". It is not drawn.\n");
            }
        }
        ViewPicture picture = order.view;
        picture.look.pixelsPerMm = m_options.pixelsPerInch / kMillimetresPerInch;
        const bool isDrawn = m_view->Draw(picture, drawing, error);
        drawing.pixelsPerInch = m_options.pixelsPerInch;
        for (luhost::render::DrawnPicture& symbol : drawing.pictures) {
            symbol.lineWidth *= m_options.pixelsPerInch / luhost::render::Drawing().pixelsPerInch;
        }
        return isDrawn;
    }

    static std::string NameOf(const PictureOrder& order)
    {
        return order.page > 0             ? PageText(order.page)
               : order.viewName == kSaved ? PageText(0)
                                          : PageText(0) + " " + order.viewName;
    }

    static const char* HintFor(const PictureOrder& order, const std::string& error)
    {
        const auto tellsOf = [&error](const char* word) { return error.find(word) != std::string::npos; };
        if (tellsOf("camera")) {
            return ". Name a side with --view.";
        }
        if (tellsOf("scene")) {
            return ". Leave parts out with --hide.";
        }
        return order.page > 0 && tellsOf("sheet") ? "." : ". Ask for another size with --size.";
    }

    ExitCode Fail(const std::string& text)
    {
        m_progress.Tell(Printable(m_options.name) + ": error: " + text + "\n");
        return ExitCode::Failed;
    }

    const SeriesOptions& m_options;
    DocumentSource& m_source;
    luhost::Document& m_document;
    Progress& m_progress;
    std::vector<SymbolState> m_states;
    std::vector<PictureOrder> m_orders;
    std::optional<ViewDrawing> m_view; ///< from the first view on
};

} // namespace

std::vector<std::string_view> ViewNames()
{
    std::vector<std::string_view> names = luhost::render::StandardViewNames();
    names.push_back(kSaved);
    return names;
}

std::string FaultOfOutput(const SeriesOptions& options)
{
    const std::string_view strange = options.views.empty() ? options.page ? kViewWord : "" : kPageWord;
    if (!strange.empty() && options.output.find(strange) != std::string::npos) {
        return "there is nothing to put in the place of " + std::string(strange) + ". Leave it out of " +
               Quote(options.output);
    }
    std::set<std::string> outputs;
    for (const PictureOrder& order : OrdersOfViews(options)) {
        if (!outputs.insert(order.output).second) {
            return "several views would be written to " + Quote(order.output) +
                   ". Put {view} or {n} into the name, such as 'picture-{view}.svg'";
        }
    }
    return {};
}

ExitCode DrawSeries(const SeriesOptions& options, Progress& progress)
{
    return WorkOnDocument({}, options.name, progress,
                          [&](DocumentSource& source) { return Series(options, source).Draw(); });
}

} // namespace lusym
