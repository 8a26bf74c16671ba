// Patches that read files and the network (Image Downloader, XML
// Downloader, Syndication, Directory Scanner) and other compositions (Patch
// Renderer), on local files and a loopback server: data arrives on a later
// frame without the frame waiting, and what cannot be read or parsed leaves
// the outputs empty instead of failing the render.

#include "CompositionBuilder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include "plist/PropertyList.h"
#include "runtime/patches/Download.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>

using test::Node;

namespace {

std::unique_ptr<runtime::Renderer> fetching(const char* className, std::initializer_list<const char*> outputs)
{
    Node r = test::root();
    r.child(Node(className, "Fetch_1"));
    r.publishInput("url", "Fetch_1", "inputURL");
    for (const char* out : outputs) r.publishOutput(out, "Fetch_1", out);
    return std::make_unique<runtime::Renderer>(test::load(r), QSize(8, 8));
}

// Renders frames until `output` holds something (at most 5 s); the number
// of frames it took, or −1.
int framesUntil(runtime::Renderer& renderer, const char* output)
{
    QElapsedTimer timer;
    timer.start();
    for (int frame = 1; timer.elapsed() < 5000; ++frame) {
        renderer.render(frame * 0.04);
        if (renderer.outputPortValue(output).kind() != runtime::Value::Kind::Null) return frame;
        QThread::msleep(2);
    }
    return -1;
}

void write(const QString& path, const QByteArray& data)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
}

TEST(NetworkPatches, ImageDownloaderReadsLocalFilesAndUrls)
{
    QTemporaryDir dir;
    QImage picture(3, 2, QImage::Format_ARGB32);
    picture.fill(Qt::green);
    ASSERT_TRUE(picture.save(dir.filePath("green.png")));
    for (const QString& location : {dir.filePath("green.png"), QUrl::fromLocalFile(dir.filePath("green.png")).toString()}) {
        auto renderer = fetching("QCImageDownloader", {"outputImage"});
        renderer->setInputValue("url", location);
        ASSERT_GT(framesUntil(*renderer, "outputImage"), 0) << location.toStdString();
        EXPECT_EQ(renderer->outputPortValue("outputImage").toImage().pixelSize(), QSize(3, 2));
    }
    // Missing and undecodable files give no image, and rendering goes on.
    write(dir.filePath("broken.png"), "not a picture");
    for (const char* name : {"missing.png", "broken.png"}) {
        auto renderer = fetching("QCImageDownloader", {"outputImage"});
        renderer->setInputValue("url", dir.filePath(name));
        for (int frame = 0; frame < 20; ++frame) renderer->render(frame * 0.04), QThread::msleep(2);
        EXPECT_EQ(renderer->outputPortValue("outputImage").kind(), runtime::Value::Kind::Null) << name;
    }
}

TEST(NetworkPatches, XmlDownloaderGivesTheElementTree)
{
    QTemporaryDir dir;
    write(dir.filePath("scores.xml"), "<scores league=\"north\"><game home=\"A\">3</game><game home=\"B\">1</game></scores>");
    auto renderer = fetching("QCXMLDownloader", {"outputStructure"});
    renderer->setInputValue("url", dir.filePath("scores.xml"));
    ASSERT_GT(framesUntil(*renderer, "outputStructure"), 0);
    const QVariantMap root = renderer->outputValue("outputStructure").toMap();
    EXPECT_EQ(root["name"].toString(), "scores");
    EXPECT_EQ(root["attributes"].toMap()["league"].toString(), "north");
    const QVariantList games = root["children"].toList();
    ASSERT_EQ(games.size(), 2);
    EXPECT_EQ(games[1].toMap()["attributes"].toMap()["home"].toString(), "B");
    EXPECT_EQ(games[0].toMap()["value"].toString(), "3");

    write(dir.filePath("bad.xml"), "<scores><game></scores>");
    auto bad = fetching("QCXMLDownloader", {"outputStructure"});
    bad->setInputValue("url", dir.filePath("bad.xml"));
    for (int frame = 0; frame < 20; ++frame) bad->render(frame * 0.04), QThread::msleep(2);
    EXPECT_EQ(bad->outputPortValue("outputStructure").kind(), runtime::Value::Kind::Null);
}

TEST(NetworkPatches, SyndicationReadsRssAndAtom)
{
    QTemporaryDir dir;
    write(dir.filePath("news.rss"),
          "<rss version=\"2.0\"><channel><title>Studio</title><link>http://example.invalid/</link>"
          "<item><title>First &amp; foremost</title><link>http://example.invalid/1</link><description>One</description></item>"
          "<item><title>Second</title><pubDate>Mon, 01 Jan 2024 00:00:00 GMT</pubDate></item></channel></rss>");
    write(dir.filePath("news.atom"),
          "<feed xmlns=\"http://www.w3.org/2005/Atom\"><title>Atom news</title>"
          "<entry><title>Only</title><link href=\"http://example.invalid/a\"/><summary>Sum</summary></entry></feed>");
    auto rss = fetching("QCSyndication", {"outputArticles", "outputInfo"});
    rss->setInputValue("url", dir.filePath("news.rss"));
    ASSERT_GT(framesUntil(*rss, "outputArticles"), 0);
    const QVariantList items = rss->outputValue("outputArticles").toList();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0].toMap()["title"].toString(), "First & foremost");
    EXPECT_EQ(items[0].toMap()["link"].toString(), "http://example.invalid/1");
    EXPECT_EQ(items[1].toMap()["date"].toString(), "Mon, 01 Jan 2024 00:00:00 GMT");
    EXPECT_EQ(rss->outputValue("outputInfo").toMap()["title"].toString(), "Studio");

    auto atom = fetching("QCSyndication", {"outputArticles", "outputInfo"});
    atom->setInputValue("url", dir.filePath("news.atom"));
    ASSERT_GT(framesUntil(*atom, "outputArticles"), 0);
    const QVariantList entries = atom->outputValue("outputArticles").toList();
    ASSERT_EQ(entries.size(), 1);
    EXPECT_EQ(entries[0].toMap()["link"].toString(), "http://example.invalid/a");
    EXPECT_EQ(entries[0].toMap()["description"].toString(), "Sum");
}

// A server on the loopback address that answers one request with `reply`
// (or, when `reply` is empty, never answers until it is destroyed).
class LoopbackServer {
public:
    explicit LoopbackServer(QByteArray reply) : reply_(std::move(reply))
    {
        listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener_, 1) != 0) return;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] {
            const int client = ::accept(listener_, nullptr, nullptr);
            if (client < 0) return;
            char buffer[4096];
            QByteArray request;
            while (!request.contains("\r\n\r\n")) {
                const ssize_t n = ::recv(client, buffer, sizeof(buffer), 0);
                if (n <= 0) break;
                request.append(buffer, n);
            }
            if (!reply_.isEmpty()) ::send(client, reply_.constData(), std::size_t(reply_.size()), 0);
            else while (!stop_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
            ::close(client);
        });
    }
    ~LoopbackServer()
    {
        stop_ = true;
        ::shutdown(listener_, SHUT_RDWR);
        ::close(listener_);
        if (thread_.joinable()) thread_.join();
    }
    QString url(const char* path) const { return QStringLiteral("http://127.0.0.1:%1/%2").arg(port_).arg(QLatin1String(path)); }

private:
    QByteArray reply_;
    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

TEST(NetworkPatches, HttpFromTheLoopbackAddressWithATimeOut)
{
    const QByteArray body = "<feed xmlns=\"http://www.w3.org/2005/Atom\"><entry><title>Live</title></entry></feed>";
    LoopbackServer server("HTTP/1.1 200 OK\r\nContent-Type: application/atom+xml\r\nContent-Length: " +
                          QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
    auto feed = fetching("QCSyndication", {"outputArticles"});
    feed->setInputValue("url", server.url("feed"));
    ASSERT_GT(framesUntil(*feed, "outputArticles"), 0);
    EXPECT_EQ(feed->outputValue("outputArticles").toList().value(0).toMap()["title"].toString(), "Live");

    // A server that never answers: the download gives up after its time-out.
    LoopbackServer silent{QByteArray()};
    QElapsedTimer timer;
    timer.start();
    const runtime::Download download(silent.url("slow"), QString(), 300);
    EXPECT_FALSE(download.result().has_value());  // under way, and the caller did not wait
    const runtime::Download::Result result = download.wait();
    EXPECT_FALSE(result.error.isEmpty());
    EXPECT_LT(timer.elapsed(), 4000);
}

}  // namespace

namespace {

TEST(FilePatches, DirectoryScannerListsTheFolderOffTheFrame)
{
    QTemporaryDir dir;
    QDir(dir.path()).mkpath("sub");
    QImage pixel(1, 1, QImage::Format_ARGB32);
    pixel.fill(Qt::red);
    for (const char* name : {"b.png", "a.jpg", "sub/c.png"}) ASSERT_TRUE(pixel.save(dir.filePath(name)));
    write(dir.filePath("notes.txt"), "not an image");
    const auto names = [&](bool recursive) {
        Node scanner("QCDirectoryScanner", "Scanner_1");
        scanner.state("fileType", "public.image").state("recursive", recursive);
        Node r = test::root();
        r.child(scanner).publishInput("folder", "Scanner_1", "inputPath").publishOutput("files", "Scanner_1", "outputFiles");
        runtime::Renderer renderer(test::load(r), QSize(8, 8));
        renderer.setInputValue("folder", dir.path());
        QStringList found;
        if (framesUntil(renderer, "files") < 0) return found;
        for (const QVariant& file : renderer.outputValue("files").toList()) {
            const QVariantMap m = file.toMap();
            EXPECT_EQ(QUrl(m["url"].toString()).toLocalFile(), m["path"].toString());
            found << QDir(dir.path()).relativeFilePath(m["path"].toString());
        }
        return found;
    };
    EXPECT_EQ(names(false), QStringList({"a.jpg", "b.png"}));
    EXPECT_EQ(names(true), QStringList({"a.jpg", "b.png", "sub/c.png"}));
}

TEST(FilePatches, ImageResizeScalesToThePixelSizeAsked)
{
    QImage pixels(10, 4, QImage::Format_ARGB32_Premultiplied);
    pixels.fill(Qt::blue);
    const auto resized = [&](double w, double h) {
        Node n("QCImageResize", "Resize_1");
        n.input("inputWidth", w).input("inputHeight", h);
        Node r = test::root();
        r.child(n).publishInput("image", "Resize_1", "inputImage").publishOutput("out", "Resize_1", "outputImage");
        runtime::Renderer renderer(test::load(r), QSize(8, 8));
        renderer.setInputPortValue("image", runtime::Value(runtime::Image::fromRaster(pixels)));
        renderer.render(0);
        return renderer.outputPortValue("out").toImage().pixelSize();
    };
    EXPECT_EQ(resized(20, 2), QSize(20, 2));
    EXPECT_EQ(resized(0, 8), QSize(10, 8));     // 0 keeps the width
    EXPECT_EQ(resized(1e9, 4), QSize(8192, 4));  // capped
}

}  // namespace

namespace {

TEST(CompositionPatches, PatchRendererDrawsAnotherFileWithItsInputs)
{
    // The inner file: a clear to the colour of its published input "Color".
    Node inner = test::root();
    inner.child(Node("QCClear", "Clear_1"));
    inner.publishInput("Color", "Clear_1", "inputColor");
    QTemporaryDir dir;
    const QString innerPath = dir.filePath("inner.qtz");
    const auto xml = plist::writeXml(test::document(inner));
    ASSERT_TRUE(xml);
    write(innerPath, QByteArray::fromStdString(*xml));

    const auto outer = [&](const QString& path) {
        plist::Dictionary input{{"class", "QCColorPort"}, {"key", "_protocolInput_Color"}};
        Node renderer("QCPatchRenderer", "PatchRenderer_1");
        renderer.state("compositionInputs", plist::Array{plist::Value(input)}).input("inputPath", path.toStdString());
        renderer.input("_protocolInput_Color", test::colorValue(0, 0, 1));
        Node r = test::root();
        r.child(renderer);
        runtime::Renderer rendering(test::load(r), QSize(8, 8));
        rendering.render(0);
        return rendering.snapshot().pixel(4, 4);
    };
    EXPECT_EQ(outer(innerPath), qRgb(0, 0, 255));
    EXPECT_EQ(qAlpha(outer("/gradient")), 0);  // a repository name: nothing drawn, no failure
    EXPECT_EQ(qAlpha(outer(dir.filePath("missing.qtz"))), 0);
}

}  // namespace
