#include "Platform/SystemInfo.h"

#include <gtest/gtest.h>

namespace ringwell {
namespace {

using namespace SystemInfo;

TEST(SystemInfoTest, OsVersionPrefersThePrettyNameThenNameAndVersionThenTheKernel) {
    EXPECT_EQ(
        osVersionFrom("PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
                      "VERSION=\"12 (bookworm)\"\n",
                      "6.1.0-18-amd64"),
        "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(osVersionFrom("NAME=Fedora\nVERSION=\"40 (Workstation Edition)\"\n", "6.8"),
              "Fedora 40 (Workstation Edition)");
    EXPECT_EQ(osVersionFrom("NAME='Arch Linux'\nPRETTY_NAME=\"  \"\n", "6.8"), "Arch Linux");
    EXPECT_EQ(osVersionFrom("", "6.8.0-31-generic\n"), "Linux 6.8.0-31-generic");
    EXPECT_EQ(osVersionFrom("garbage without equals\n", ""), "Linux");
}

TEST(SystemInfoTest, OsReleaseValuesAreReadAsTheShellWouldReadThem) {
    const auto values = parseOsRelease("# a comment\n"
                                       "  ID=debian  \n"
                                       "PRETTY_NAME=\"Say \\\"hi\\\" \\\\ $\"\n"
                                       "VARIANT='Server Edition'\n"
                                       "=novalue\n"
                                       "LAST=no newline");
    EXPECT_EQ(values.at("ID"), "debian");
    EXPECT_EQ(values.at("PRETTY_NAME"), "Say \"hi\" \\ $");
    EXPECT_EQ(values.at("VARIANT"), "Server Edition");
    EXPECT_EQ(values.at("LAST"), "no newline");
    EXPECT_EQ(values.size(), 4u);
}

TEST(SystemInfoTest, DeviceModelJoinsVendorAndProductTrimmedWithoutFirmwarePlaceholders) {
    EXPECT_EQ(deviceModelFrom("Framework\n", "Laptop 13 (AMD Ryzen 7040Series)\n"),
              "Framework Laptop 13 (AMD Ryzen 7040Series)");
    // A product that already names its maker is not prefixed twice.
    EXPECT_EQ(deviceModelFrom("Dell Inc.", "Dell Inc. XPS 13"), "Dell Inc. XPS 13");
    EXPECT_EQ(deviceModelFrom("To Be Filled By O.E.M.", "B450M Pro4"), "B450M Pro4");
    EXPECT_EQ(deviceModelFrom("LENOVO", "System Product Name"), "LENOVO");
    EXPECT_EQ(deviceModelFrom("System manufacturer", "  \n"), "Unknown");
    EXPECT_EQ(deviceModelFrom(std::nullopt, std::nullopt), "Unknown");
}

} // namespace
} // namespace ringwell
