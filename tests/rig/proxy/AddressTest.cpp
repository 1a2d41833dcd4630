#include <gtest/gtest.h>

#include <stdexcept>

#include "rig/proxy/Address.h"

namespace rig::proxy {
namespace {

/// @return what the text is read as, "HOST PORT"; empty if it is not read
std::string Read(const std::string& text, int lowestPort = 1) {
    const std::optional<HostAndPort> place = ParseHostAndPort(text, lowestPort);
    return place ? place->host + " " + std::to_string(place->port) : "";
}

TEST(HostAndPort, IsReadFromAnOption) {
    EXPECT_EQ(" 5001", Read("5001"));
    EXPECT_EQ("recorder 5001", Read("recorder:5001"));
    EXPECT_EQ("::1 5001", Read("[::1]:5001"));
    EXPECT_EQ("127.0.0.1 65535", Read("127.0.0.1:65535"));
    EXPECT_EQ(" 0", Read("0", 0));
}

TEST(HostAndPort, IsNotReadFromAnythingElse) {
    for (const char* const text :
         {"", ":", ":5001", "recorder", "recorder:", "recorder:0", "recorder:65536", "recorder:-1",
          "recorder: 5001", "::1:5001", "[]:5001", "[::1]5001", "[::1:5001"}) {
        EXPECT_EQ("", Read(text)) << text;
    }
}

Address AddressOf(const std::string& text) {
    return Resolve(*ParseHostAndPort(text, 1), "--listen");
}

TEST(Address, IsWrittenWithItsPort) {
    EXPECT_EQ("127.0.0.1:5001", AddressOf("127.0.0.1:5001").Words());
    EXPECT_EQ("[::1]:5001", AddressOf("[::1]:5001").Words());
    EXPECT_EQ("0.0.0.0:5001", AddressOf("5001").Words());
}

TEST(Address, OfANameIsTheHarnessesFamily) {
    EXPECT_EQ("127.0.0.1:5001", AddressOf("localhost:5001").Words());
}

TEST(Address, LeadsToItselfAndToAllAddressesOfThisMachine) {
    EXPECT_TRUE(LeadsTo(AddressOf("10.0.0.5:5001"), AddressOf("10.0.0.5:5001")));
    EXPECT_TRUE(LeadsTo(AddressOf("127.0.0.2:5001"), AddressOf("5001")));
    EXPECT_TRUE(LeadsTo(AddressOf("[::1]:5001"), AddressOf("[::]:5001")));
    EXPECT_FALSE(LeadsTo(AddressOf("127.0.0.1:5002"), AddressOf("5001")));
    EXPECT_FALSE(LeadsTo(AddressOf("10.0.0.5:5001"), AddressOf("5001")));
    EXPECT_FALSE(LeadsTo(AddressOf("127.0.0.1:5001"), AddressOf("10.0.0.5:5001")));
}

TEST(Address, SaysWhichOptionHasAHostThatCannotBeResolved) {
    try {
        Resolve({"no host", 5001}, "--harness");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(0U, std::string(error.what())
                          .find("--harness: expected a host that can be resolved, found 'no host': "));
    }
}

}  // namespace
}  // namespace rig::proxy
