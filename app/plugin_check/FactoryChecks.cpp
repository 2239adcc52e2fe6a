#include "Check.h"
#include "Trial.h"

#include <dp/LUTracer.h>
#include <luannotations/Annotation.h>
#include <luk/illustration/AssociativeObjectLoader.h>
#include <luk/MarkupController.h>
#include <luk/MemoryPoolAllocated.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <array>
#include <mutex>
#include <vector>

namespace lusym::check
{

namespace
{

using Slot = du::SmartPtr<du::RefCounted>;

struct Request {
    std::string action;
    std::string category;
    std::string type;
};

std::string TextOf(const Request& request)
{
    const auto shortened = [](const std::string& word) { return word.size() > 40 ? word.substr(0, 40) + "..." : word; };
    return "(\"" + shortened(request.action) + "\", \"" + shortened(request.category) + "\", \"" +
           shortened(request.type) + "\")";
}

const std::vector<Request>& KnownRequests()
{
    static const std::vector<Request> s_requests = {{"create", "annotation", "symbol2d"},
                                                    {"create", "annotation", "symbol3d"},
                                                    {"create", "annotation", "symbol3dflattened"},
                                                    {"load", "template", "symbol"}};
    return s_requests;
}

bool Create(Trial& trial, const Request& request, Slot& slot)
{
    return trial.GetPlugin().CreateComponent(request.action, request.category, request.type, slot);
}

/// An object that tells when it goes.
class Witness : public du::RefCounted
{
public:
    explicit Witness(int& ends) : m_ends(ends) {}
    ~Witness() override { ++m_ends; }

private:
    int& m_ends;
};

/// What is traced while it lives.
class TraceRecord
{
public:
    TraceRecord()
        : m_before(dp::LUTracer::SetSink([this](const dp::TraceMessage& message) {
              const std::lock_guard lock(m_mutex);
              m_lines.push_back(std::string(message.channel.channel) + " below " + message.channel.parent + ", type " +
                                std::to_string(message.type) + ": " + std::string(message.text));
          }))
    {
    }
    ~TraceRecord() { dp::LUTracer::SetSink(m_before); }
    TraceRecord(const TraceRecord&) = delete;
    TraceRecord& operator=(const TraceRecord&) = delete;

    std::vector<std::string> Take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_lines, {});
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
    dp::TraceSink m_before;
};

/// Requests that are nearly known.
std::vector<Request> NearMisses(std::mt19937_64& random)
{
    using namespace std::string_literals;
    const auto variants = [&](const std::string& word) {
        std::string other = word;
        other[random() % other.size()] ^= 0x20;
        std::string upper = word;
        upper.front() = static_cast<char>(upper.front() - 'a' + 'A');
        return std::vector<std::string>{"",
                                        " ",
                                        word + " ",
                                        " " + word,
                                        word + "\n",
                                        upper,
                                        other,
                                        word + "\0"s,
                                        "\0"s + word,
                                        word + "\0x"s,
                                        word.substr(1),
                                        word + "s",
                                        word + "\xFF",
                                        "\xC0\xAF"s,
                                        std::string(65536, 's'),
                                        word + std::string(65536, ' '),
                                        "%s%n"};
    };
    std::vector<Request> misses = {{"create", "template", "symbol"},     {"load", "annotation", "symbol2d"},
                                   {"annotation", "create", "symbol2d"}, {"template", "load", "symbol"},
                                   {"create", "annotation", "symbol"},   {"load", "template", "symbol2d"},
                                   {"symbol2d", "annotation", "create"}, {"load", "annotation", "symbol"}};
    for (const Request& known : KnownRequests()) {
        for (std::string& word : variants(known.action)) {
            misses.push_back({std::move(word), known.category, known.type});
        }
        for (std::string& word : variants(known.category)) {
            misses.push_back({known.action, std::move(word), known.type});
        }
        for (std::string& word : variants(known.type)) {
            misses.push_back({known.action, known.category, std::move(word)});
        }
    }
    return misses;
}

void CheckRequests(Trial& trial)
{
    for (const Request& request : KnownRequests()) {
        Slot slot;
        Slot another;
        const std::string text = TextOf(request);
        trial.Expect(Create(trial, request, slot), "the request " + text + " is answered with false");
        if (!trial.Expect(slot != nullptr, "the request " + text + " leaves the slot empty")) {
            continue;
        }
        trial.Expect(slot->GetReferenceCount() == 1, "what " + text + " makes is held by others than the slot");
        Create(trial, request, another);
        trial.Expect(!(slot == another), "two requests " + text + " give one object");
        if (const auto annotation = du::DynamicCast<luannotations::Annotation>(slot)) {
            trial.Expect(annotation->GetClass().GetText() == request.type,
                         "what " + text + " makes has the class word \"" + annotation->GetClass().GetText() + "\"");
        } else {
            trial.Expect(request.action == "load", "what " + text + " makes is no annotation");
            trial.Expect(du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(slot) || request.action != "load",
                         "what " + text + " makes is no loader of symbol libraries");
        }
    }
}

void CheckNearMisses(Trial& trial)
{
    int ends = 0;
    Slot empty;
    Slot slot(new Witness(ends));
    const du::RefCounted* const before = slot.get();
    for (const Request& request : NearMisses(trial.Random())) {
        const std::string text = TextOf(request);
        trial.Expect(!Create(trial, request, slot) && !Create(trial, request, empty),
                     "the unknown request " + text + " is answered with true");
        if (!trial.Expect(slot.get() == before && !empty && slot->GetReferenceCount() == 1,
                          "the unknown request " + text + " changes the slot")) {
            return;
        }
    }
}

void CheckSlotReplaced(Trial& trial)
{
    for (const Request& request : KnownRequests()) {
        int ends = 0;
        Slot slot(new Witness(ends));
        const Slot also = slot;
        Create(trial, request, slot);
        const std::string text = TextOf(request);
        trial.Expect(also->GetReferenceCount() == 1 && ends == 0,
                     "the request " + text + " does not release what the slot held exactly once");
        trial.Expect(!(slot == also) && slot && slot->GetReferenceCount() == 1,
                     "after the request " + text + " the slot does not hold the new component alone");
        Create(trial, KnownRequests().front(), slot);
        trial.Expect(slot != nullptr, "a slot that holds a component is not filled again");
    }
}

void CheckAllocation(Trial& trial)
{
    const auto counters = [] { return luk::MemoryPoolAllocated::GetCounters(); };
    for (const Request& request : KnownRequests()) {
        const auto before = counters();
        Slot slot;
        Create(trial, request, slot);
        const auto with = counters();
        const std::string text = "what " + TextOf(request) + " makes ";
        if (request.action == "create") {
            trial.Expect(with.liveBytes >= before.liveBytes + sizeof(luannotations::Annotation),
                         text + "does not come from the host's pool");
        } else {
            trial.Expect(with.liveBlocks == before.liveBlocks, text + "comes from the host's pool");
        }
        slot = nullptr;
        trial.Expect(counters().liveBlocks == before.liveBlocks && counters().liveBytes == before.liveBytes,
                     text + "is not given back to where it came from");
    }
}

void CheckTraceLines(Trial& trial)
{
    TraceRecord record;
    for (const Request& request : KnownRequests()) {
        Slot slot;
        Create(trial, request, slot);
        std::string told;
        for (const std::string& line : record.Take()) {
            told += line;
        }
        const std::string expected =
            request.action == "load" ? "lusymbols below root, type 0: Create new template loader\n" : "";
        std::string broken = "the request " + TextOf(request);
        broken.append(" traces \"").append(told).append("\" and not \"").append(expected).append("\"");
        trial.Expect(told == expected, broken);
    }
    Slot slot;
    Create(trial, {"load", "template", "symbols"}, slot);
    trial.Expect(record.Take().empty(), "an unknown request is traced");
}

void CheckBaseClasses(Trial& trial)
{
    for (const Request& request : KnownRequests()) {
        Slot slot;
        Create(trial, request, slot);
        const std::string text = "what " + TextOf(request) + " makes ";
        if (const auto annotation = du::DynamicCast<luannotations::Annotation>(slot)) {
            // Each way up has to end at the one counted part, wherever in the object that is.
            luk::Annotation* const up = annotation.get();
            luk::MarkupController* const controller = up;
            trial.Expect(static_cast<du::RefCounted*>(up) == slot.get() &&
                             static_cast<du::RefCounted*>(controller) == slot.get(),
                         text + "is counted in two places");
            trial.Expect(dynamic_cast<void*>(slot.get()) == dynamic_cast<void*>(controller),
                         text + "is not one object by all its bases");
            trial.Expect(dynamic_cast<luk::Observable*>(slot.get()) == static_cast<luk::Observable*>(up),
                         text + "cannot be observed as every annotation can");
        } else {
            trial.Expect(slot && dynamic_cast<void*>(slot.get()) == static_cast<void*>(slot.get()),
                         text + "does not begin with its counted base");
        }
    }
}

void CheckFixedAnswers(Trial& trial)
{
    constexpr unsigned int kFirstMarkup = 0;
    for (const char* const type : kAnnotationTypes) {
        const auto annotation = trial.MakeAnnotation(type);
        if (!annotation) {
            continue;
        }
        const std::string text = std::string("an annotation of the type \"").append(type).append("\" ");
        const bool isPicture = std::string(type) == "symbol2d";
        trial.Expect(annotation->IsZoomable(), text + "says that it cannot be zoomed to");
        trial.Expect(!annotation->GetIconName().IsEmpty(), text + "has no icon");
        trial.Expect(!annotation->GetPreselectionCursor().IsEmpty(), text + "has no cursor");
        if (!isPicture) {
            trial.Expect(annotation->NumberOfMarkups() == 0, text + "says that it has markups");
            trial.Expect(!annotation->AllowGroupDrag(), text + "says that it can be dragged in a group");
            trial.Expect(!annotation->GetMarkupName(kFirstMarkup).empty(), text + "has no name for a markup");
            trial.Expect(!annotation->GetObjectDescription().empty(), text + "does not describe itself");
        }
    }
}

constexpr Check kFactoryChecks[] = {
    {"requests", "factory",
     "LUDllCreateComponent answers four requests with true: (\"create\", \"annotation\") with \"symbol2d\", "
     "\"symbol3d\" or "
     "\"symbol3dflattened\", and (\"load\", \"template\", \"symbol\"). Each puts a fresh component into the slot, "
     "which "
     "alone holds it; an annotation's class word is the type that was asked for.",
     CheckRequests},
    {"near-misses", "factory",
     "Any other request is answered with false and leaves the slot as it is, whether that is empty or not. Words are "
     "compared whole and with case: a blank more, another case, a NUL inside, words in each other's place, 64 KB of "
     "text "
     "or bytes that are no UTF-8 make a request unknown.",
     CheckNearMisses},
    {"slot-replaced", "factory",
     "A known request may find an object in the slot. That one is released once, whoever else holds it keeps it, and "
     "the "
     "slot holds the new component alone.",
     CheckSlotReplaced},
    {"allocation", "factory",
     "Annotations come from the host's memory pool and go back there; the loader comes from the ordinary allocator.",
     CheckAllocation},
    {"trace-lines", "factory",
     "A request for a loader writes the one line \"Create new template loader\" as information to the channel "
     "\"lusymbols\" "
     "below \"root\". Other requests, known or not, write nothing.",
     CheckTraceLines},
    {"base-classes", "factory",
     "A component is one object whichever of its base classes it is held by. An annotation shares one counted base "
     "among "
     "all of them, at whatever place of the object; a loader begins with its counted base.",
     CheckBaseClasses},
    {"fixed-answers", "factory",
     "Every annotation can be zoomed to and has words for its icon and its cursor. One in space has no markups, is not "
     "dragged in a group, and describes itself, with or without a name.",
     CheckFixedAnswers},
};

} // namespace

std::span<const Check> FactoryChecks() { return kFactoryChecks; }

} // namespace lusym::check
