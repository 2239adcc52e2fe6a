#include "PlainAnnotations.h"

#include <dg/XmlElem.h>
#include <luk/PlainContentReader.h>
#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <future>
#include <iterator>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace luhost
{

namespace
{

constexpr std::string_view kListStart = "<annotations";
constexpr std::string_view kListEnd = "</annotations";
constexpr std::string_view kElementStart = "<element";
/// No name that anybody is likely to use.
constexpr std::string_view kMark = "<_annotations_read_/>";
constexpr std::string_view kMarkName = kMark.substr(1, kMark.size() - 3);

std::size_t SkipWhiteSpace(std::string_view text, std::size_t at) noexcept
{
    return std::min(text.find_first_not_of(" \n\t\r", at), text.size());
}

std::size_t CountOf(std::string_view word, std::string_view text) noexcept
{
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + word.size())) {
        ++count;
    }
    return count;
}

/// Where the content of the first list of annotations at or behind a place begins; the end of the text when there is none.
std::size_t FindList(std::string_view text, std::size_t at) noexcept
{
    const std::size_t list = std::min(text.find(kListStart, at), text.size());
    return std::min(text.find('>', list), text.size() - 1) + 1;
}

/// A run and its place in the text, the white space behind it included.
struct Found {
    std::size_t begin;
    std::size_t end;
    PlainAnnotations::Run run;
};

/// Reads all lists of annotations in a text, or in the end of one.
class ListReader
{
public:
    explicit ListReader(std::string_view text) : m_text(text) {}

    /// @param begin of the text, or of an annotation in a list, with the white space before it
    std::vector<Found> ReadFrom(std::size_t begin)
    {
        std::size_t at = begin == 0 ? FindList(m_text, 0) : begin;
        while (at < m_text.size()) {
            at = FindList(m_text, ReadList(at));
        }
        return std::move(m_found);
    }

private:
    /// @return where to look for the next list
    std::size_t ReadList(std::size_t begin)
    {
        const std::size_t indent = SkipWhiteSpace(m_text, begin) - begin;
        const std::string_view start = m_text.substr(begin, indent + kElementStart.size());
        std::size_t listEnd = 0;
        for (std::size_t at = begin + indent;;) {
            at = ReadRun(at);
            if (!m_text.substr(at).starts_with(kElementStart)) {
                return at;
            }
            // This one is left to the parser, and all up to the next that begins like the first.
            listEnd = listEnd == 0 ? std::min(m_text.find(kListEnd, at), m_text.size()) : listEnd;
            const std::size_t next = m_text.substr(0, listEnd).find(start, at + 1);
            if (next == std::string_view::npos) {
                return listEnd;
            }
            at = next + indent;
        }
    }

    /// @return where the run ends
    std::size_t ReadRun(std::size_t begin)
    {
        PlainAnnotations::Run run;
        std::size_t end = begin;
        while (m_text.substr(end).starts_with(kElementStart)) {
            auto content = std::make_unique<luk::SerializedContentElement>();
            const std::size_t size = m_reader.Read(m_text.substr(end), *content);
            if (size == 0) {
                break;
            }
            run.attachOrder.Add(*content);
            run.slots.emplace_back().SetContent(std::move(content));
            end = SkipWhiteSpace(m_text, end + size);
        }
        if (!run.slots.empty()) {
            m_found.push_back({begin, end, std::move(run)});
        }
        return end;
    }

    const std::string_view m_text;
    luk::PlainContentReader m_reader;
    std::vector<Found> m_found;
};

/// How the first annotation begins, with the white space before it; empty when there is none.
std::string_view FindStart(std::string_view text) noexcept
{
    for (std::size_t list = FindList(text, 0); list < text.size(); list = FindList(text, list)) {
        const std::size_t indent = SkipWhiteSpace(text, list) - list;
        if (const std::string_view start = text.substr(list, indent + kElementStart.size());
            start.ends_with(kElementStart)) {
            return start;
        }
    }
    return {};
}

/// Places between annotations that part a text into pieces of about the same size, one for each processor.
std::vector<std::size_t> PartsOf(std::string_view text)
{
    // What is less is read before a thread has begun.
    constexpr std::size_t kBytesWorthAThread = std::size_t{1} << 18;
    const std::size_t parts =
        std::clamp<std::size_t>(text.size() / kBytesWorthAThread, 1, std::max(std::thread::hardware_concurrency(), 1U));
    std::vector<std::size_t> begins = {0};
    const std::string_view start = parts > 1 ? FindStart(text) : std::string_view();
    for (std::size_t i = 1; i < parts && !start.empty(); ++i) {
        // Parts that begin elsewhere, as within an annotation, would have the document parsed whole.
        const std::size_t begin = text.find(start, std::max(begins.back() + 1, text.size() / parts * i));
        if (begin == std::string_view::npos) {
            break;
        }
        begins.push_back(begin);
    }
    return begins;
}

/// In the order of the text.
std::vector<Found> FindAll(std::string_view text)
{
    const std::vector<std::size_t> begins = PartsOf(text);
    const auto read = [&](std::size_t part) {
        const std::size_t end = part + 1 < begins.size() ? begins[part + 1] : text.size();
        return ListReader(text.substr(0, end)).ReadFrom(begins[part]);
    };
    std::vector<std::future<std::vector<Found>>> others;
    try {
        while (others.size() + 1 < begins.size()) {
            others.push_back(std::async(std::launch::async, read, others.size() + 1));
        }
    } catch (const std::system_error&) {
        // There is no further thread to be had, and this one does what is left.
    }
    std::vector<Found> all = read(0);
    for (std::size_t part = 1; part < begins.size(); ++part) {
        std::vector<Found> more = part <= others.size() ? others[part - 1].get() : read(part);
        std::move(more.begin(), more.end(), std::back_inserter(all));
    }
    return all;
}

} // namespace

bool PlainAnnotations::IsMark(const dg::XmlElem& element) noexcept { return element.GetName() == kMarkName; }

PlainAnnotations PlainAnnotations::ReadFrom(std::string_view document)
{
    PlainAnnotations read;
    std::size_t end = 0;
    for (Found& found : FindAll(document)) {
        read.m_rest.append(document.substr(end, found.begin - end)).append(kMark);
        read.m_runs.push_back(std::move(found.run));
        end = found.end;
    }
    read.m_rest.append(document.substr(end));
    return CountOf(kMarkName, read.m_rest) == read.m_runs.size() ? std::move(read) : PlainAnnotations();
}

} // namespace luhost
