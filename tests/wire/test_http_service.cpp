// The CIM service over HTTP: which requests reach the operation, and how every refusal
// is answered (status, CIMError header, WWW-Authenticate).
#include "WireTestSupport.h"

#include <Server/auth/PasswordFile.h>
#include <Server/auth/PasswordHash.h>

#include <gtest/gtest.h>

using namespace qel::http;
using namespace wiretest;

namespace {

struct ServiceCase {
  const char* what;
  std::function<void(HttpRequest&, ConnectionInfo&)> change;
  int status;
  const char* cimError;      // expected CIMError header, "" for none
  const char* bodyMentions;  // "" for no check
};

std::string headerOf(const HttpResponse& r, const std::string& name) {
  for (const auto& h : r.headers)
    if (h.first == name) return h.second;
  return "<absent>";
}

void setHeader(HttpRequest& r, const std::string& name, const std::string& value) {
  for (auto& h : r.headers)
    if (h.first == name) {
      h.second = value;
      return;
    }
  r.headers.emplace_back(name, value);
}

void dropHeader(HttpRequest& r, const std::string& name) {
  for (auto it = r.headers.begin(); it != r.headers.end(); ++it)
    if (it->first == name) {
      r.headers.erase(it);
      return;
    }
}

class CimHttpServiceTest : public ::testing::TestWithParam<ServiceCase> {
 protected:
  static void SetUpTestSuite() { frontEnd = new FrontEnd(); }
  static void TearDownTestSuite() {
    delete frontEnd;
    frontEnd = nullptr;
  }

  static HttpRequest goodRequest() {
    HttpRequest r;
    r.method = "POST";
    r.target = "/cimom";
    r.headers = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                 {"CIMProtocolVersion", "1.0"},
                 {"CIMOperation", "MethodCall"},
                 {"CIMMethod", "EnumerateInstanceNames"},
                 {"CIMObject", "root%2Fqel"},
                 {"Authorization", basicAuth("alice", "wonderland")}};
    r.body = enumerateNamesBody();
    return r;
  }

  static FrontEnd* frontEnd;
};

FrontEnd* CimHttpServiceTest::frontEnd = nullptr;

TEST_P(CimHttpServiceTest, AnswersAsTheCimMappingPrescribes) {
  const ServiceCase& c = GetParam();
  HttpRequest request = goodRequest();
  ConnectionInfo connection;
  connection.clientAddress = "127.0.0.1";
  c.change(request, connection);
  const HttpResponse response = frontEnd->service->process(request, connection);
  EXPECT_EQ(response.status, c.status) << c.what << "\n" << response.body;
  EXPECT_EQ(headerOf(response, "CIMError"), *c.cimError ? c.cimError : "<absent>") << c.what;
  if (*c.bodyMentions) {
    EXPECT_NE(response.body.find(c.bodyMentions), std::string::npos) << c.what << response.body;
  }
  if (c.status == 401) {
    EXPECT_EQ(headerOf(response, "WWW-Authenticate"), "Basic realm=\"qel-cimserver\"");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Requests, CimHttpServiceTest,
    ::testing::Values(
        ServiceCase{"good request", [](HttpRequest&, ConnectionInfo&) {}, 200, "",
                    "<INSTANCENAME CLASSNAME=\"QEL_FCPort\">"},
        ServiceCase{"namespace header not escaped", [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "CIMObject", "root/qel"); },
                    200, "", "INSTANCENAME"},
        ServiceCase{"GET", [](HttpRequest& r, ConnectionInfo&) { r.method = "GET"; }, 405, "", "POST"},
        ServiceCase{"other path", [](HttpRequest& r, ConnectionInfo&) { r.target = "/admin"; }, 404, "", "/cimom"},
        ServiceCase{"no credentials", [](HttpRequest& r, ConnectionInfo&) { dropHeader(r, "Authorization"); }, 401, "",
                    ""},
        ServiceCase{"wrong password",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "Authorization", basicAuth("alice", "x")); },
                    401, "", ""},
        ServiceCase{"unknown user",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "Authorization", basicAuth("eve", "x")); }, 401,
                    "", ""},
        ServiceCase{"no CIMOperation", [](HttpRequest& r, ConnectionInfo&) { dropHeader(r, "CIMOperation"); }, 400,
                    "unsupported-operation", ""},
        ServiceCase{"CIMOperation not a call",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "CIMOperation", "MethodResponse"); }, 400,
                    "unsupported-operation", ""},
        ServiceCase{"protocol version 2",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "CIMProtocolVersion", "2.0"); }, 501,
                    "unsupported-protocol-version", ""},
        ServiceCase{"no CIMMethod", [](HttpRequest& r, ConnectionInfo&) { dropHeader(r, "CIMMethod"); }, 400,
                    "header-mismatch", ""},
        ServiceCase{"CIMMethod names another operation",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "CIMMethod", "GetInstance"); }, 400,
                    "header-mismatch", "CIMMethod"},
        ServiceCase{"no CIMObject", [](HttpRequest& r, ConnectionInfo&) { dropHeader(r, "CIMObject"); }, 400,
                    "header-mismatch", ""},
        ServiceCase{"CIMObject names another namespace",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "CIMObject", "root%2Fother"); }, 400,
                    "header-mismatch", "CIMObject"},
        ServiceCase{"malformed XML", [](HttpRequest& r, ConnectionInfo&) { r.body = "<CIM><MESSAGE"; }, 400,
                    "request-not-well-formed", "not well-formed"},
        ServiceCase{"not a CIM document", [](HttpRequest& r, ConnectionInfo&) { r.body = "<html/>"; }, 400,
                    "request-not-valid", ""},
        ServiceCase{"wrong content type",
                    [](HttpRequest& r, ConnectionInfo&) { setHeader(r, "Content-Type", "text/plain"); }, 415, "", ""},
        ServiceCase{"M-POST with the CIM mapping",
                    [](HttpRequest& r, ConnectionInfo&) {
                      r.method = "M-POST";
                      for (auto& h : r.headers)
                        if (h.first.rfind("CIM", 0) == 0) h.first = "73-" + h.first;
                      r.headers.emplace_back("Man", "http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73");
                    },
                    200, "", "INSTANCENAME"},
        ServiceCase{"M-POST without Man", [](HttpRequest& r, ConnectionInfo&) { r.method = "M-POST"; }, 400, "",
                    "Man"},
        ServiceCase{"local socket user without password",
                    [](HttpRequest& r, ConnectionInfo& c) {
                      dropHeader(r, "Authorization");
                      c.transport = Transport::Local;
                      c.peerUser = "localuser";
                    },
                    200, "", "INSTANCENAME"},
        ServiceCase{"local socket peer unknown",
                    [](HttpRequest& r, ConnectionInfo& c) {
                      dropHeader(r, "Authorization");
                      c.transport = Transport::Local;
                      c.peerError = "peer uid 4242 has no user name";
                    },
                    401, "", ""}));

TEST_F(CimHttpServiceTest, UnknownOperationIsACimErrorNotAnHttpError) {
  HttpRequest r = goodRequest();
  setHeader(r, "CIMMethod", "Teleport");
  const std::string from = "EnumerateInstanceNames";
  r.body.replace(r.body.find(from), from.size(), "Teleport");
  ConnectionInfo c;
  const HttpResponse response = frontEnd->service->process(r, c);
  EXPECT_EQ(response.status, 200);
  EXPECT_NE(response.body.find("<IMETHODRESPONSE NAME=\"Teleport\"><ERROR CODE=\"7\""), std::string::npos)
      << response.body;
}

TEST_F(CimHttpServiceTest, VerifiedCredentialsAreRememberedUntilThePasswordFileChanges) {
  const HttpRequest r = goodRequest();
  ConnectionInfo c;
  ASSERT_EQ(frontEnd->service->process(r, c).status, 200);
  EXPECT_EQ(c.verifiedUser, "alice");
  EXPECT_EQ(frontEnd->executor.lastUser(), "alice");
  // Same connection, same header: still accepted without a new hash check.
  EXPECT_EQ(frontEnd->service->process(r, c).status, 200);

  TempPasswordFile& pw = frontEnd->passwords;
  qel::auth::PasswordFile f = qel::auth::PasswordFile::load(pw.path(), false);
  f.set("alice", qel::auth::hashPassword("changed-password"));
  f.save(pw.path());
  EXPECT_EQ(frontEnd->service->process(r, c).status, 401);  // the old password no longer opens anything
  f.set("alice", qel::auth::hashPassword("wonderland"));
  f.save(pw.path());
}

}  // namespace
