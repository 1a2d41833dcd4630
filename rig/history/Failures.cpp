#include <algorithm>
#include <tuple>
#include <utility>

#include "rig/history/History.h"
#include "rig/result/Result.h"

namespace rig::history {
namespace {

/// A check of one case, as far as its course has been followed.
struct CheckCourse {
    Failure failure;  // if it has failed since it last passed
    bool isFailing = false;
};

CheckCourse& CourseOf(Text id, std::vector<CheckCourse>& checks) {
    const auto place = std::find_if(checks.begin(), checks.end(),
                                    [id](const CheckCourse& one) { return one.failure.check == id; });
    if (place != checks.end()) {
        return *place;
    }
    checks.emplace_back();
    checks.back().failure.check = id;
    return checks.back();
}

void Follow(const CheckDigest& check, const Cell& cell, CheckCourse& course) {
    Failure& failure = course.failure;
    if (!check.found) {
        course.isFailing = false;
        failure.passed = cell.build;
        return;
    }
    if (!course.isFailing) {
        failure.since = cell.build;
    }
    course.isFailing = true;
    failure.last = cell.build;
    failure.verdict = check.verdict;
    failure.found = check.found;
    failure.folder = cell.digest.folder;
    failure.hasPage = cell.digest.hasPage;
}

/// @return the checks of one case that fail now
std::vector<Failure> FailuresOf(const CaseCourse& one) {
    std::vector<CheckCourse> checks;
    for (const Cell& cell : one.cells) {
        for (const CheckDigest& check : cell.digest.checks) {
            Follow(check, cell, CourseOf(check.id, checks));
        }
    }
    std::vector<Failure> failures;
    for (CheckCourse& check : checks) {
        if (check.isFailing) {
            check.failure.cases = {one.name};
            failures.push_back(std::move(check.failure));
        }
    }
    return failures;
}

bool IsAlike(const Failure& one, const Failure& other) {
    return std::tie(one.check, one.verdict, one.since, one.last, one.passed) ==
               std::tie(other.check, other.verdict, other.since, other.last, other.passed) &&
           result::WithoutDetails(*one.found) == result::WithoutDetails(*other.found);
}

}  // namespace

std::vector<Failure> FailuresIn(const std::vector<CaseCourse>& cases) {
    std::vector<Failure> all;
    for (const CaseCourse& one : cases) {
        for (Failure& failure : FailuresOf(one)) {
            const auto place = std::find_if(
                all.begin(), all.end(), [&failure](const Failure& other) { return IsAlike(failure, other); });
            if (place == all.end()) {
                all.push_back(std::move(failure));
            } else {
                place->cases.push_back(one.name);
            }
        }
    }
    std::stable_sort(all.begin(), all.end(),
                     [](const Failure& one, const Failure& other) { return one.since > other.since; });
    return all;
}

}  // namespace rig::history
