#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "rig/history/History.h"

namespace rig::history {
namespace {

constexpr std::size_t kMostBefore = 10;

using Points = std::vector<ReactionCourse::Point>;

/// @return the spread of the points from the first one that counts up to this one
diff::Span SpanBefore(const Points& points, std::size_t first, std::size_t point) {
    diff::Span span = points[first].digest.span;
    for (std::size_t index = first; index < point; ++index) {
        span.Add(points[index].digest.span);
    }
    return span;
}

std::vector<ReactionCourse::Mark> MarksIn(const Points& points) {
    std::vector<ReactionCourse::Mark> marks;
    for (std::size_t point = 1; point < points.size(); ++point) {
        const std::size_t window = point > kMostBefore ? point - kMostBefore : 0;
        const std::size_t first = std::max(window, marks.empty() ? 0 : marks.back().point);
        const diff::Span before = SpanBefore(points, first, point);
        const diff::Span& now = points[point].digest.span;
        const bool isSlower = diff::IsSlower(now, before);
        if (isSlower || diff::IsSlower(before, now)) {
            marks.push_back({point, isSlower, before});
        }
    }
    return marks;
}

std::vector<ReactionCourse> CoursesOfReactions(const CaseCourse& one) {
    std::vector<ReactionCourse> courses;
    std::unordered_map<Text, std::size_t> places;
    for (const Cell& cell : one.cells) {
        for (const ReactionDigest& digest : cell.digest.reactions) {
            const auto [place, isNew] = places.try_emplace(digest.request, courses.size());
            if (isNew) {
                courses.push_back({digest.request, one.name, {}, {}});
            }
            courses[place->second].points.push_back({cell.build, digest});
        }
    }
    return courses;
}

}  // namespace

std::vector<ReactionCourse> ReactionsIn(const std::vector<CaseCourse>& cases) {
    std::vector<ReactionCourse> all;
    for (const CaseCourse& one : cases) {
        for (ReactionCourse& course : CoursesOfReactions(one)) {
            course.marks = MarksIn(course.points);
            all.push_back(std::move(course));
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const ReactionCourse& one, const ReactionCourse& other) {
        return std::tuple(*one.request, one.marks.empty()) < std::tuple(*other.request, other.marks.empty());
    });
    return all;
}

}  // namespace rig::history
