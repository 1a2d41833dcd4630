#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "rig/base/Counted.h"
#include "rig/history/PageSections.h"
#include "rig/history/Reports.h"
#include "rig/html/HtmlPage.h"

namespace rig::history {
namespace {

constexpr std::size_t kMostPlots = 500;
constexpr double kWidth = 210;  // pixels, like all that follow
constexpr double kHeight = 64;
constexpr double kMargin = 6;  // left and right
constexpr double kTop = 14;    // the longest time stands above

/// Where times and campaigns are in the picture of one course.
class Scale {
 public:
    Scale(const ReactionCourse& course, std::size_t builds)
        : step_(builds > 1 ? (kWidth - 2 * kMargin) / static_cast<double>(builds - 1) : 0) {
        for (const ReactionCourse::Point& point : course.points) {
            longest_ = std::max({longest_, point.digest.span.most, point.digest.median});
        }
    }

    double X(std::size_t build) const { return kMargin + step_ * static_cast<double>(build); }

    double Y(double milliseconds) const {
        const double share = longest_ > 0 ? milliseconds / longest_ : 0;
        return kHeight - kMargin - share * (kHeight - kMargin - kTop);
    }

    double Longest() const { return longest_; }

 private:
    double step_;
    double longest_ = 0;
};

pugi::xml_node AddPath(pugi::xml_node picture, const char* cssClass, const std::string& path) {
    pugi::xml_node shape = Add(picture, "path", {}, cssClass);
    Set(shape, "d", path);
    return shape;
}

/// A line for each campaign, from the least of its medians to the greatest of its 95th percentiles.
std::string SpreadPath(const ReactionCourse& course, const Scale& scale) {
    std::string path;
    for (const ReactionCourse::Point& point : course.points) {
        fmt::format_to(std::back_inserter(path), "M{:.1f} {:.1f}V{:.1f}", scale.X(point.build),
                       scale.Y(point.digest.span.typical) + 1, scale.Y(point.digest.span.most) - 1);
    }
    return path;
}

std::string MedianPath(const ReactionCourse& course, const Scale& scale) {
    std::string path;
    for (const ReactionCourse::Point& point : course.points) {
        fmt::format_to(std::back_inserter(path), "{}{:.1f} {:.1f}", path.empty() ? "M" : "L",
                       scale.X(point.build), scale.Y(point.digest.median));
    }
    return course.points.size() > 1 ? path : path + "h3";
}

/// A triangle that points up from the median, or down if it got faster.
void AddMark(pugi::xml_node picture, const History& history, const ReactionCourse& course,
             const ReactionCourse::Mark& mark, const Scale& scale) {
    const ReactionCourse::Point& point = course.points[mark.point];
    const double x = scale.X(point.build);
    const double y = scale.Y(point.digest.median);
    const std::string path = mark.isSlower ? fmt::format("M{:.1f} {:.1f}l-4 8h8z", x, y - 10)
                                           : fmt::format("M{:.1f} {:.1f}l-4 -8h8z", x, y + 10);
    Add(AddPath(picture, mark.isSlower ? "slower" : "faster", path), "title", Words(history, course, mark));
}

std::string SentenceFor(const ReactionCourse& course) {
    return fmt::format("{} in {}, campaigns {} to {}", *course.request, *course.name,
                       course.points.front().build + 1, course.points.back().build + 1);
}

void AddPicture(pugi::xml_node figure, const History& history, const ReactionCourse& course) {
    const Scale scale(course, history.builds.size());
    pugi::xml_node picture = Add(figure, "svg");
    Set(picture, "xmlns", "http://www.w3.org/2000/svg");
    Set(picture, "width", fmt::format("{:.0f}", kWidth));
    Set(picture, "height", fmt::format("{:.0f}", kHeight));
    Set(picture, "role", "img");
    Set(picture, "aria-label", SentenceFor(course));
    pugi::xml_node text = Add(picture, "text", fmt::format("{:.1f} ms", scale.Longest()));
    Set(text, "x", "3");
    Set(text, "y", "10");
    AddPath(picture, "spread", SpreadPath(course, scale));
    AddPath(picture, "median", MedianPath(course, scale));
    for (const ReactionCourse::Mark& mark : course.marks) {
        AddMark(picture, history, course, mark, scale);
    }
}

void AddFigure(pugi::xml_node plots, const History& history, const ReactionCourse& course) {
    pugi::xml_node figure = Add(plots, "figure");
    AddPicture(figure, history, course);
    pugi::xml_node caption = Add(figure, "figcaption");
    Add(caption, "strong", *course.name);
    AddText(caption, ", last " + course.points.back().digest.span.Words());
    for (const ReactionCourse::Mark& mark : course.marks) {
        Add(caption, "div", Words(history, course, mark));
    }
}

using Courses = std::vector<ReactionCourse>;

/// Adds the plots of one request, which only open if there is something to see.
void AddRequest(pugi::xml_node main, const History& history, Courses::const_iterator first,
                Courses::const_iterator last, bool isMarkedOnly) {
    const auto marked =
        std::count_if(first, last, [](const ReactionCourse& one) { return !one.marks.empty(); });
    pugi::xml_node details = Add(main, "details");
    if (marked > 0) {
        Set(details, "open", "open");
    }
    Add(details, "summary",
        fmt::format("{}: {}, of which {} left the spread", *first->request,
                    Counted(static_cast<std::uint64_t>(last - first), "case"), marked));
    pugi::xml_node plots = Add(details, "div", {}, "plots");
    for (; first != last; ++first) {
        if (!isMarkedOnly || !first->marks.empty()) {
            AddFigure(plots, history, *first);
        }
    }
}

}  // namespace

void AddPlots(pugi::xml_node main, const History& history) {
    Set(Add(main, "h2", "Reaction times"), "id", "reactions");
    Add(main, "p",
        "Over all campaigns, in ms: the line joins the medians; the bar of each reaches to what 95 of 100 "
        "reactions took. A triangle marks a campaign that left the spread of the ten before it, or of those "
        "since the last triangle: its medians are above all these bars (it points up), or those medians "
        "above its bar (it points down), by more than a fifth and more than 20 ms.",
        "hint");
    const bool isMarkedOnly = history.reactions.size() > kMostPlots;
    if (isMarkedOnly) {
        Add(main, "p",
            fmt::format("Of {} plots only those with a triangle are shown.", history.reactions.size()),
            "cut");
    }
    for (auto first = history.reactions.begin(); first != history.reactions.end();) {
        const auto last = std::find_if(first, history.reactions.end(), [first](const ReactionCourse& one) {
            return one.request != first->request;
        });
        AddRequest(main, history, first, last, isMarkedOnly);
        first = last;
    }
}

}  // namespace rig::history
