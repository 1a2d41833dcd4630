#include <gtest/gtest.h>

namespace {

/// Ends a test at its first fatal failure, even if a helper found it: the steps of a dialogue build on one
/// another, and each one after a failed one would only wait for its deadline. A failure without a location is
/// an exception that the framework has already caught.
class EndTestOnFailure : public testing::EmptyTestEventListener {
    void OnTestPartResult(const testing::TestPartResult& result) override {
        if (result.fatally_failed() and result.file_name() not_eq nullptr) {
            throw testing::AssertionException(result);
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new EndTestOnFailure);
    return RUN_ALL_TESTS();
}
