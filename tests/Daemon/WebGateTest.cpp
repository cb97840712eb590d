#include "Daemon/WebGate.h"
#include "Daemon/ApiMessage.h"
#include "Daemon/StaticFiles.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

namespace ringwell {
namespace {

const std::string token(64, 'a');
constexpr std::uint16_t port = 7383;

ApiRequest request(const std::string& method, const std::string& target,
                   std::map<std::string, std::string> headers) {
    auto parsed = parseTarget(method, target);
    EXPECT_TRUE(parsed);
    parsed->headers = std::move(headers);
    return *parsed;
}

// A status of 0 means let in.
TEST(WebGateTest, LetsInLoopbackHostsWithTheTokenAndRefusesForeignHostsAndOrigins) {
    using Headers = std::map<std::string, std::string>;
    const std::string host = "127.0.0.1:7383";
    const std::string cookie = "a=b; ringwell_token=" + token;
    const std::tuple<const char*, Headers, unsigned> cases[] = {
        {"GET", {{"host", host}, {"cookie", cookie}}, 0u},
        {"GET", {{"host", "localhost:7383"}, {"cookie", cookie}}, 0u},
        {"GET", {{"host", "[::1]:7383"}, {"cookie", cookie}}, 0u},
        {"POST",
         {{"host", "localhost:7383"},
          {"x-ringwell-token", token},
          {"origin", "http://localhost:7383"}},
         0u},
        // DNS rebinding: a page of another name that resolves to us.
        {"GET", {{"host", "evil.example:7383"}, {"x-ringwell-token", token}}, 403u},
        {"GET", {{"host", "127.0.0.1:9999"}, {"x-ringwell-token", token}}, 403u},
        {"GET", {{"x-ringwell-token", token}}, 403u},
        {"DELETE",
         {{"host", host}, {"x-ringwell-token", token}, {"origin", "http://evil.example"}},
         403u},
        {"GET", {{"host", host}}, 401u},
        {"GET", {{"host", host}, {"x-ringwell-token", std::string(64, 'b')}}, 401u},
        {"GET", {{"host", host}, {"cookie", "ringwell_token="}}, 401u}};
    int row = 0;
    for (const auto& [method, headers, status] : cases) {
        SCOPED_TRACE("case " + std::to_string(row++));
        auto answer = WebGate::check(request(method, "/v1/events", headers), token, port);
        EXPECT_EQ(answer ? answer->status : 0u, status);
    }
    // A page gets a readable page, the API a JSON error.
    auto page = WebGate::check(request("GET", "/", {{"host", "127.0.0.1:7383"}}), token, port);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->contentType, "text/html; charset=utf-8");
}

TEST(WebGateTest, TokenInTheAddressBecomesACookie) {
    auto answer = WebGate::check(
        request("GET", "/history?token=" + token + "&tab=2", {{"host", "127.0.0.1:7383"}}), token,
        port);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 303u);
    EXPECT_EQ(answer->headers[0],
              (std::pair<std::string, std::string>{"Location", "/history?tab=2"}));
    EXPECT_EQ(answer->headers[1].second,
              "ringwell_token=" + token + "; Path=/; HttpOnly; SameSite=Strict");
    // The redirect names this site's own path, however the path was encoded.
    for (auto [target, location] : std::vector<std::pair<std::string, std::string>>{
             {"//evil.example/x?token=" + token, "/evil.example/x"},
             {"/%2F%2Fevil.example?token=" + token, "/evil.example"},
             {"/a%0d%0aSet-Cookie:%20x=1?token=" + token, "/a%0D%0ASet-Cookie%3A%20x%3D1"},
             {"/?token=" + token, "/"}}) {
        auto redirect =
            WebGate::check(request("GET", target, {{"host", "127.0.0.1:7383"}}), token, port);
        ASSERT_TRUE(redirect);
        EXPECT_EQ(redirect->headers[0].second, location) << target;
    }
    auto wrong =
        WebGate::check(request("GET", "/?token=nope", {{"host", "127.0.0.1:7383"}}), token, port);
    ASSERT_TRUE(wrong);
    EXPECT_EQ(wrong->status, 401u);
}

TEST(StaticFilesTest, ServesFilesAndTheAppForItsRoutesButNothingOutside) {
    auto root = std::filesystem::path(::testing::TempDir()) / "ringwell-static";
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root / "assets");
    std::ofstream(root / "index.html") << "<html>app</html>";
    std::ofstream(root / "assets" / "app.js") << "run()";
    std::ofstream(root.parent_path() / "secret.txt") << "secret";
    StaticFiles files(root);
    EXPECT_EQ(files.serve("/").body, "<html>app</html>");
    EXPECT_EQ(files.serve("/history").body, "<html>app</html>");
    auto script = files.serve("/assets/app.js");
    EXPECT_EQ(script.body, "run()");
    EXPECT_EQ(script.contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(files.serve("/assets/missing.js").status, 404u);
    EXPECT_EQ(files.serve("/../secret.txt").status, 404u);
    EXPECT_EQ(files.serve("/assets/../../secret.txt").status, 404u);
    // Links out of the root and NUL-cut names are refused too.
    std::filesystem::create_directory_symlink(root.parent_path(), root / "up");
    std::filesystem::create_symlink(root.parent_path() / "secret.txt", root / "leak.txt");
    EXPECT_EQ(files.serve("/up/secret.txt").status, 404u);
    EXPECT_EQ(files.serve("/leak.txt").status, 404u);
    EXPECT_EQ(files.serve(std::string_view("/index.html\0.png", 16)).status, 404u);
    std::filesystem::remove_all(root);
}

TEST(ApiMessageTest, TargetsAreSplitAndDecoded) {
    auto parsed = parseTarget("GET", "/v1/known-senders?app=Mail&app=My%20App&q=a+b");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->path, "/v1/known-senders");
    EXPECT_EQ(parsed->queryValues("app"), (std::vector<std::string>{"Mail", "My App"}));
    EXPECT_EQ(parsed->queryValue("q"), "a b");
    EXPECT_FALSE(parseTarget("GET", "/v1/x?bad=%2"));
    EXPECT_FALSE(parseTarget("GET", "/v1/%zz"));
}

} // namespace
} // namespace ringwell
