// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Nothing that the tool reads makes it connect to a network.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// A port of this machine that notices connections.
class Listener {
 public:
  Listener() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    if (bind(socket_, Address(), size) != 0 || listen(socket_, 8) != 0 ||
        getsockname(socket_, Address(), &size) != 0) {
      throw std::runtime_error("Unable to listen");
    }
  }
  ~Listener() { close(socket_); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::string Url(const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(ntohs(address_.sin_port));
  }

  void Connect() {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(client, Address(), sizeof address_), 0);
    close(client);
  }

  // Returns whether there was a connection since the last call.
  bool HasCaller() {
    const int caller = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
    close(caller);
    return caller != -1;
  }

 private:
  sockaddr* Address() { return reinterpret_cast<sockaddr*>(&address_); }

  const int socket_;
  sockaddr_in address_ = {};
};

class NetworkTest : public ::testing::Test {
 protected:
  // Returns a document whose prolog refers to the network: in processing instructions, in the
  // document type and in entities.
  std::string Document(const std::string& root) const {
    const std::string url = listener_.Url("http");
    return "<?xml version='1.0'?><?oasis-xml-catalog catalog='" + url + "/catalog'?>" +
           "<?xml-stylesheet href='" + url + "/style'?>" + "<!DOCTYPE plugin SYSTEM '" + url +
           "/type' [<!ENTITY % more SYSTEM '" + url + "/more'> %more; <!ENTITY text SYSTEM '" +
           url + "/text'>]>" + root;
  }

  // Returns attributes and elements that name documents on the network.
  std::string References() const {
    const std::string url = listener_.Url("http");
    return "<a xmlns:i='http://www.w3.org/2001/XInclude' "
           "xmlns:s='http://www.w3.org/2001/XMLSchema-instance' s:noNamespaceSchemaLocation='" +
           url + "/schema'><i:include href='" + url + "/include'/>&text;</a>";
  }

  std::string Descriptor(const std::string& command) const {
    return Document("<plugin>" + References() +
                    "<version>1.0.0</version><namespaces><namespace path='far'><description>Far."
                    "</description></namespace></namespaces><commands><command path='far.away'>"
                    "<description>Away.</description><input-spec/><output-spec><string/>"
                    "</output-spec><format-parameters><formatter>simple</formatter>"
                    "</format-parameters><execute>" +
                    command + "</execute></command></commands></plugin>");
  }

  void ExpectNoCaller() { EXPECT_FALSE(listener_.HasCaller()); }

  Listener listener_;
  ScopedTempDir folder_;
};

TEST_F(NetworkTest, TheListenerNoticesAConnection) {
  EXPECT_FALSE(listener_.HasCaller());
  listener_.Connect();
  EXPECT_TRUE(listener_.HasCaller());
  EXPECT_FALSE(listener_.HasCaller());
}

TEST_F(NetworkTest, TheUrlOfAPluginNamesAFileThatDoesNotExist) {
  for (const char* const scheme : {"http", "HTTP", "ftp", "Ftp"}) {
    const std::string name = listener_.Url(scheme) + "/far.xml";
    const VexilResult result = VexilRun({"--plugin", name, "vexil", "command", "list"})
                                   .WithEnvironment("http_proxy", listener_.Url("http"))
                                   .WithEnvironment("ftp_proxy", listener_.Url("ftp"))
                                   .Run();
    EXPECT_EQ(result.err,
              "I/O warning : failed to load external entity \"" + name + "\"\n" +
                  "Unable to load plugin " + name + ": Unable to handle XML Plugin " + name +
                  ".  There was an error while parsing: Unable to parse XML descriptor: " + name +
                  "\n");
    EXPECT_EQ(result.status, 0);
    ExpectNoCaller();
  }
}

TEST_F(NetworkTest, TheUrlOfAFolderNamesNoFolder) {
  const std::string name = listener_.Url("http");
  const VexilResult result = VexilRun({"--plugin-dir", name, "vexil", "command", "list"}).Run();
  EXPECT_EQ(result.err, "Unable to open directory " + name + " for plugin registration\n");
  ExpectNoCaller();
}

TEST_F(NetworkTest, AMissingFileIsNotLookedForInACatalog) {
  const std::string catalog =
      folder_.Write("catalog.xml",
                    "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
                    "<rewriteSystem systemIdStartString='/' rewritePrefix='" +
                        listener_.Url("http") +
                        "/'/><rewriteURI uriStartString='/' "
                        "rewritePrefix='" +
                        listener_.Url("http") + "/'/></catalog>");
  for (const std::string& catalogs : {catalog, listener_.Url("http") + "/catalog.xml"}) {
    const VexilResult result =
        VexilRun({"--plugin", folder_.GetPath("missing.xml"), "vexil", "command", "list"})
            .WithEnvironment("XML_CATALOG_FILES", catalogs)
            .Run();
    EXPECT_THAT(result.err, StartsWith("I/O warning : failed to load external entity \"" +
                                       folder_.GetPath("missing.xml") + "\"\n"));
    ExpectNoCaller();
  }
}

TEST_F(NetworkTest, ADescriptorFetchesNothing) {
  const std::string file =
      folder_.Write("far.xml", Descriptor("printf '&lt;o>&lt;string>here&lt;/string>&lt;/o>'"));
  const VexilResult result = VexilRun({"--plugin", file, "far", "away"}).Run();
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "here\n");
  ExpectNoCaller();
}

TEST_F(NetworkTest, AResultFetchesNothing) {
  const std::string value =
      folder_.Write("value.xml", Document("<o><string>near</string>" + References() + "</o>"));
  const std::string file = folder_.Write("far.xml", Descriptor("cat " + value));
  const VexilResult result = VexilRun({"--plugin", file, "far", "away"}).Run();
  EXPECT_EQ(result.out, "near\n");
  ExpectNoCaller();
}

TEST_F(NetworkTest, AFileMayBeNamedByItsPathOrItsUri) {
  const std::string file = folder_.Write(
      "far away.xml", Descriptor("printf '&lt;o>&lt;string>here&lt;/string>&lt;/o>'"));
  for (const std::string& name : {file, "file://" + folder_.GetPath("far%20away.xml")}) {
    const VexilResult result = VexilRun({"--plugin", name, "far", "away"}).Run();
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "here\n");
  }
}

}  // namespace

}  // namespace Kestrel::Testing
