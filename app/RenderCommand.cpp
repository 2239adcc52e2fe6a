#include "DocumentSource.h"
#include "Invocation.h"
#include "LibraryRules.h"
#include "OutputFile.h"
#include "PictureSeries.h"
#include "Printable.h"
#include "TextValues.h"
#include "ValueOptions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

namespace lusym
{

namespace
{

using luhost::render::SceneDrawingOptions;
using luhost::render::UpAxis;

std::optional<PictureFormat> FormatOfName(const std::string& name)
{
    const std::size_t dot = name.rfind('.');
    return FindPictureFormat(CLI::detail::to_lower(dot == name.npos ? std::string() : name.substr(dot + 1)));
}

/// What a text stands for, or what is wrong with it.
using OptionReader = std::function<std::string(SeriesOptions& options, const std::string& text)>;

/// "800x600", "800" or "x600"
std::string TakePixelSize(SeriesOptions& options, const std::string& text)
{
    constexpr double kLargestSide = 65536.0;
    const std::vector<double> sides = ParseNumbers(text, 'x', true);
    const auto isSide = [](double side) {
        return !(side < 1.0) && !(side > kLargestSide) && !(std::floor(side) < side);
    };
    const bool isSize = !sides.empty() && sides.size() <= 2 && std::ranges::all_of(sides, isSide) &&
                        std::ranges::any_of(sides, [](double side) { return side >= 1.0; });
    if (!isSize) {
        return Quote(text) + " is no size. Write WxH, W or xH, in pixels, up to 65536";
    }
    options.view.pixelWidth = sides[0] >= 1.0 ? static_cast<int>(sides[0]) : 0;
    options.view.pixelHeight = sides.size() == 2 && sides[1] >= 1.0 ? static_cast<int>(sides[1]) : 0;
    return {};
}

std::string TakeBackground(SeriesOptions& options, const std::string& text)
{
    const std::optional<dg::Color> color = ParseColor(text);
    options.background = color.value_or(options.background);
    return color ? std::string() : Quote(text) + " is no colour. Write #rrggbb, #rrggbbaa, or one of " + ColorNames();
}

std::string JoinedNames(const std::vector<std::string_view>& names)
{
    std::string text;
    for (const std::string_view name : names) {
        text.append(text.empty() ? "" : ", ").append(name);
    }
    return text;
}

std::string TakeView(SeriesOptions& options, const std::string& text)
{
    const std::vector<std::string_view> names = ViewNames();
    const std::string name = CLI::detail::to_lower(text);
    if (std::ranges::count(names, name) == 0) {
        const std::string_view meant = NearestName(name, names);
        return "there is no view " + Quote(text) +
               (meant.empty() ? ". Write one of " + JoinedNames(names) : ". Did you mean " + std::string(meant) + "?");
    }
    options.views.push_back(name);
    return {};
}

/// "0.5", or with the kind of lines: "silhouette=0.5"
std::string TakeLineWidth(SeriesOptions& options, const std::string& text)
{
    constexpr double kLargestMm = 20.0;
    const std::size_t equals = text.find('=');
    const std::string kind = equals == text.npos ? "all" : text.substr(0, equals);
    const std::optional<double> width = ParseNumber(equals == text.npos ? text : text.substr(equals + 1));
    const bool isWidth = width && *width > 0.0 && *width <= kLargestMm;
    if (!isWidth || !options.view.look.SetLineWidth(kind, *width)) {
        return Quote(text) +
               " is no line width. Write millimetres up to 20, such as 0.5, or with the kind of lines, "
               "such as silhouette=0.5; kinds are silhouette, border, crease, boundary, intersection, hidden, symbol";
    }
    return {};
}

/// Options of pictures that take one text each.
class PictureOptions
{
public:
    PictureOptions(CLI::App& verb, std::shared_ptr<SeriesOptions> options, CLI::Option* page)
        : m_verb(verb), m_options(std::move(options)), m_page(page)
    {
    }

    void AddShared()
    {
        AddText("--size", "WxH",
                "Size in pixels, of a PNG picture and of the view; W or xH alone keep the shape (default: the view's "
                "own, 96 pixels an inch for a page)",
                TakePixelSize);
        AddText("--background", "COLOR", "Colour behind everything, such as white (default: none)", TakeBackground);
    }

    void AddOfViews()
    {
        AddText("--view", "NAME",
                "The side from which the product is seen: " + JoinedNames(ViewNames()) +
                    ". May be repeated; each but saved, the camera of the document, shows everything (default: saved)",
                TakeView)
            ->allow_extra_args(false)
            ->excludes(m_page);
        AddFlag("--fit", m_options->view.isFitted, "Show everything with the saved camera too, as large as it fits");
        AddChoice<SceneDrawingOptions::Style>("--style", m_options->view.look.style, "STYLE",
                                              "shaded, lines, or both (default: both)",
                                              {{"shaded", SceneDrawingOptions::Style::Shaded},
                                               {"lines", SceneDrawingOptions::Style::Lines},
                                               {"both", SceneDrawingOptions::Style::Both}});
        AddFlag("--hidden-lines", m_options->view.look.showsHiddenLines,
                "Draw lines that are hidden too, dashed (default: they are left out)");
        AddText("--line-width", "[KIND=]MM",
                "Width of lines in millimetres, of all or of silhouette, border, crease, boundary, intersection, "
                "hidden or symbol "
                "(default: 0.35, hidden 0.18); may be repeated",
                TakeLineWidth)
            ->allow_extra_args(false)
            ->excludes(m_page);
        AddFlag("--shadow", m_options->view.look.castsGroundShadow, "Let the product cast a soft shadow on the ground");
        AddChoice<UpAxis>("--up", m_options->view.up, "AXIS", "Which way is up in the product, y or z (default: y)",
                          {{"y", UpAxis::Y}, {"z", UpAxis::Z}});
        AddParts();
        AddChoice<ViewPicture::Covering>(
            "--covered", m_options->view.covering, "SYMBOLS",
            "Which symbols parts hide that stand before them: none, shapes, or all; the others are always seen "
            "(default: shapes)",
            {{"none", ViewPicture::Covering::None},
             {"shapes", ViewPicture::Covering::Shapes},
             {"all", ViewPicture::Covering::All}});
        m_verb
            .add_option("--dpi", m_options->pixelsPerInch,
                        "Pixels an inch of a view on paper, by which widths in millimetres go (default: 96)")
            ->check(NumberBetween(1.0, 9600.0))
            ->excludes(m_page)
            ->type_name("N");
    }

private:
    CLI::Option* AddText(const std::string& name, const std::string& type, const std::string& help,
                         const OptionReader& take)
    {
        const auto options = m_options;
        CLI::Option* const option = m_verb.add_option_function<std::vector<std::string>>(
            name,
            [options, name, take](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) {
                    if (const std::string fault = take(*options, text); !fault.empty()) {
                        throw CLI::ValidationError(name, fault);
                    }
                }
            },
            help);
        return option->type_name(type);
    }

    void AddParts()
    {
        m_verb
            .add_option("--hide", m_options->hidden,
                        "A part that is left out with what is in it and the symbols on it, as \"lusym part list\" "
                        "names it; may be repeated")
            ->allow_extra_args(false)
            ->excludes(m_page)
            ->type_name("PART");
        CLI::Option* const explode =
            m_verb
                .add_option(
                    "--explode", m_options->explosion.factor,
                    "Move the parts away from the middle of the product; with 1 they are twice as far from each "
                    "other")
                ->check(NumberBetween(0.0, 100.0))
                ->excludes(m_page)
                ->type_name("FACTOR");
        m_verb
            .add_option("--explode-levels", m_options->explosion.levels,
                        "Take assemblies apart down to this level of the tree; with 1 those of the product move as a "
                        "whole (default: down to the parts)")
            ->check(CLI::Range(1, 1000).description(""))
            ->needs(explode)
            ->type_name("N");
    }

    void AddFlag(const std::string& name, bool& flag, const std::string& help)
    {
        m_verb.add_flag(name, flag, help)->excludes(m_page);
    }

    template <class Value>
    void AddChoice(const std::string& name, Value& value, const std::string& type, const std::string& help,
                   std::map<std::string, Value> choices)
    {
        lusym::AddChoice(m_verb, name, value, help, std::move(choices))->excludes(m_page)->type_name(type);
    }

    CLI::App& m_verb;
    std::shared_ptr<SeriesOptions> m_options;
    CLI::Option* m_page;
};

constexpr const char* kHelp =
    "A page is drawn as it is. The view shows the product with its symbols: lines and shading, seen from the\n"
    "sides that --view names. With {view} or {n} (1, 2, ...) in the name of PICTURE several views are drawn in one\n"
    "run, and with {page} all pages, each into a file of its own. --hide and --explode leave DOC as it is;\n"
    "symbols follow their parts.\n\n"
    "SVG and PDF keep lines and vector pictures as such. In SVG data-part tells the part of a line, class what\n"
    "line it is, data-annotation the symbol, and titles are tooltips; a web address in a symbol's description\n"
    "becomes a link in SVG and PDF.\n\n"
    "Examples:\n"
    "  lusym render gearbox.luz -o gearbox.png --view iso --size 1920x1080 --background white --shadow\n"
    "  lusym render gearbox.luz -o 'gearbox-{view}.svg' --view front --view left --view top --style lines\n"
    "  lusym render gearbox.luz -o inside.pdf --view iso --hide /housing/upper-half --hidden-lines\n"
    "  lusym render gearbox.luz -o parts.svg --view iso --explode 0.8 --line-width silhouette=0.5\n"
    "  lusym render manual.luz -o 'page-{page}.pdf'\n"
    "  lusym render manual.luz -o - --format png --page 2 | display\n\n"
    "Exit codes: 0 drawn; 1 there is no such page or part, or nothing can be drawn; 2 PICTURE is DOC, its ending\n"
    "is no format, or several views have one name; 3 DOC is unreadable; 4 PICTURE is not writable; 6 some of\n"
    "several pictures were drawn, others not.\n";

} // namespace

void AddRender(CLI::App& program, Invocation& invocation)
{
    CLI::App& verb = *program.add_subcommand("render", "Draw the product from any side, or a page, as SVG, PDF or PNG");
    const auto options = std::make_shared<SeriesOptions>();
    AddDocumentArgument(verb, options->name);
    AddOutputOption(verb, options->output, "PICTURE");
    const auto format = std::make_shared<PictureFormat>();
    const CLI::Option* const formatOption =
        AddChoice(verb, "--format", *format, "svg, pdf or png (default: by the ending of PICTURE)", PictureFormats())
            ->type_name("FORMAT");
    CLI::Option* const page = verb.add_option("--page", options->page,
                                              "This page, from 1 (default: the view, or page 1 when the view is empty)")
                                  ->check(CLI::Range(1, 1000000).description(""))
                                  ->type_name("N");
    PictureOptions pictures(verb, options, page);
    pictures.AddShared();
    pictures.AddOfViews();
    verb.footer(kHelp);
    verb.callback([options, format, formatOption, &invocation] {
        const auto named = formatOption->count() != 0 ? std::optional(*format) : FormatOfName(options->output);
        if (!named) {
            throw CLI::ValidationError("--format", "say svg, pdf or png, since the ending of " +
                                                       Quote(options->output) + " is none of them");
        }
        options->format = *named;
        if (const std::string fault = FaultOfOutput(*options); !fault.empty()) {
            throw CLI::ValidationError("--output", fault);
        }
        invocation = [options](Progress& progress) { return DrawSeries(*options, progress); };
    });
}

} // namespace lusym
