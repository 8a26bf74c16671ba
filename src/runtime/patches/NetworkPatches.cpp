// Patches that fetch: Image Downloader, XML Downloader and Syndication (RSS
// and Atom). A fetch runs off the rendering thread (Download.h); until it
// arrives the outputs keep their last values, and a frame never waits. A
// new location, or the update signal going true, fetches again.
//
// XML becomes a structure per element: "name", "attributes" (keyed),
// "children" (elements, in order) and "value" (its text); Quartz
// Composer's own layout of it is not known. Syndication gives the feed's
// "title", "link" and "description" (outputInfo) and its articles
// (outputArticles), each with "title", "link", "description", "date" and
// "author".

#include "runtime/ExecutionContext.h"
#include "runtime/RendererServices.h"
#include "runtime/patches/Download.h"
#include "runtime/patches/PatchFamilies.h"

#include <QXmlStreamReader>

namespace runtime {

namespace {

using Members = std::vector<Structure::Member>;

Value structure(Members members)
{
    return Value(std::make_shared<const Structure>(std::move(members)));
}

// Starts a download when the location changes or the signal rises, and
// hands over its data once, on the frame it arrives.
class Fetcher {
public:
    std::optional<Download::Result> poll(ExecutionContext& context, const QString& location, bool signal, const QString& owner)
    {
        if (location != location_ || (signal && !signal_)) {
            location_ = location;
            download_ = location.isEmpty() ? nullptr : std::make_unique<Download>(location, context.services().compositionDirectory);
        }
        signal_ = signal;
        if (!download_) return std::nullopt;
        auto result = download_->result();
        if (!result) return std::nullopt;
        download_.reset();
        if (!result->error.isEmpty()) context.services().logOnce(QStringLiteral("%1: %2").arg(owner, result->error));
        return result;
    }
    void reset()
    {
        location_.clear();
        download_.reset();
    }

private:
    QString location_;
    bool signal_ = false;
    std::unique_ptr<Download> download_;
};

class FetchingPatch : public Patch {
public:
    explicit FetchingPatch(const PatchSetup& setup, bool hasSignal) : Patch(setup)
    {
        url_ = &addInput(QStringLiteral("inputURL"), PortType::String);
        if (hasSignal) signal_ = &addInput(QStringLiteral("inputSignal"), PortType::Boolean, false);
    }
    // Runs every frame to look whether the data has come.
    TimeMode timeMode() const override { return TimeMode::Idle; }
    void reset() override { fetcher_.reset(); }

protected:
    std::optional<Download::Result> poll(ExecutionContext& context)
    {
        return fetcher_.poll(context, url_->value.toString(), boolean(signal_), path());
    }

private:
    InputPort* url_;
    InputPort* signal_ = nullptr;
    Fetcher fetcher_;
};

class ImageDownloaderPatch : public FetchingPatch {
public:
    explicit ImageDownloaderPatch(const PatchSetup& setup) : FetchingPatch(setup, false)
    {
        image_ = &addOutput(QStringLiteral("outputImage"), PortType::Image);
        arrived_ = &addOutput(QStringLiteral("outputSignal"), PortType::Boolean);
    }
    void execute(ExecutionContext& context, double) override
    {
        const auto result = poll(context);
        setOutput(*arrived_, result.has_value() && result->error.isEmpty());
        if (!result || !result->error.isEmpty()) return;
        QString error;
        const Image image = Image::fromEncodedData(result->data, &error);
        if (image.isNull()) context.services().logOnce(QStringLiteral("%1: %2").arg(path(), error));
        setOutput(*image_, image.isNull() ? Value() : Value(image));
    }

private:
    OutputPort* image_;
    OutputPort* arrived_;
};

// Elements nest at most this deep; deeper ones are skipped.
constexpr int kMaxXmlDepth = 64;

// Reads from the element's start to its end.
Value readElement(QXmlStreamReader& xml, int depth)
{
    const QString name = xml.name().toString();
    Members attributes, children;
    for (const auto& a : xml.attributes()) attributes.push_back({a.qualifiedName().toString(), Value(a.value().toString())});
    QString text;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement()) break;
        if (xml.isCharacters()) text += xml.text();
        else if (xml.isStartElement() && depth < kMaxXmlDepth) children.push_back({QString(), readElement(xml, depth + 1)});
        else if (xml.isStartElement()) xml.skipCurrentElement();
    }
    return structure({{QStringLiteral("name"), Value(name)},
                      {QStringLiteral("attributes"), structure(std::move(attributes))},
                      {QStringLiteral("children"), structure(std::move(children))},
                      {QStringLiteral("value"), Value(text.trimmed())}});
}

// The element tree, or a null value with the parser's complaint.
Value parseXml(const QByteArray& data, QString* error)
{
    QXmlStreamReader xml(data);
    while (!xml.atEnd() && !xml.isStartElement()) xml.readNext();
    if (!xml.isStartElement()) {
        *error = xml.hasError() ? xml.errorString() : QStringLiteral("no element");
        return {};
    }
    Value root = readElement(xml, 0);
    if (xml.hasError()) {
        *error = QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
        return {};
    }
    return root;
}

class XmlDownloaderPatch : public FetchingPatch {
public:
    explicit XmlDownloaderPatch(const PatchSetup& setup) : FetchingPatch(setup, true)
    {
        structure_ = &addOutput(QStringLiteral("outputStructure"), PortType::Structure);
    }
    void execute(ExecutionContext& context, double) override
    {
        const auto result = poll(context);
        if (!result || !result->error.isEmpty()) return;
        QString error;
        Value tree = parseXml(result->data, &error);
        if (tree.kind() == Value::Kind::Null) context.services().logOnce(QStringLiteral("%1: %2").arg(path(), error));
        setOutput(*structure_, tree);
    }

private:
    OutputPort* structure_;
};

// RSS 2.0 (<channel><item>) and Atom (<feed><entry>).
struct Feed {
    Members info;
    Members articles;
};

Feed parseFeed(const QByteArray& data)
{
    Feed feed;
    QXmlStreamReader xml(data);
    Members* current = &feed.info;
    Members article;
    QString field;
    while (!xml.atEnd()) {
        xml.readNext();
        const QString name = xml.name().toString().toLower();
        if (xml.isStartElement()) {
            if (name == QLatin1String("item") || name == QLatin1String("entry")) {
                article.clear();
                current = &article;
            } else if (name == QLatin1String("link") && xml.attributes().hasAttribute(QStringLiteral("href"))) {
                current->push_back({QStringLiteral("link"), Value(xml.attributes().value(QStringLiteral("href")).toString())});
            } else {
                field = name;
            }
        } else if (xml.isEndElement()) {
            if (name == QLatin1String("item") || name == QLatin1String("entry")) {
                feed.articles.push_back({QString(), structure(article)});
                current = &feed.info;
            }
            field.clear();
        } else if (xml.isCharacters() && !xml.isWhitespace() && !field.isEmpty()) {
            static const std::pair<const char*, const char*> kFields[] = {
                {"title", "title"},         {"link", "link"},        {"description", "description"}, {"summary", "description"},
                {"content", "description"}, {"pubdate", "date"},     {"updated", "date"},            {"published", "date"},
                {"author", "author"},       {"dc:creator", "author"}, {"creator", "author"}};
            for (const auto& [tag, key] : kFields)
                if (field == QLatin1String(tag)) {
                    const QString k = QString::fromLatin1(key);
                    const auto same = std::find_if(current->begin(), current->end(), [&](const auto& m) { return m.key == k; });
                    if (same == current->end()) current->push_back({k, Value(xml.text().toString())});
                    else if (same->value.kind() == Value::Kind::String) same->value = Value(same->value.toString() + xml.text().toString());
                    break;
                }
        }
    }
    return feed;
}

class SyndicationPatch : public FetchingPatch {
public:
    explicit SyndicationPatch(const PatchSetup& setup) : FetchingPatch(setup, true)
    {
        articles_ = &addOutput(QStringLiteral("outputArticles"), PortType::Structure);
        info_ = &addOutput(QStringLiteral("outputInfo"), PortType::Structure);
    }
    void execute(ExecutionContext& context, double) override
    {
        const auto result = poll(context);
        if (!result || !result->error.isEmpty()) return;
        Feed feed = parseFeed(result->data);
        setOutput(*articles_, structure(std::move(feed.articles)));
        setOutput(*info_, structure(std::move(feed.info)));
    }

private:
    OutputPort* articles_;
    OutputPort* info_;
};

}  // namespace

void registerNetworkPatches(PatchRegistry& registry)
{
    registry.add(QStringLiteral("QCImageDownloader"), factoryOf<ImageDownloaderPatch>());
    registry.add(QStringLiteral("QCXMLDownloader"), factoryOf<XmlDownloaderPatch>());
    registry.add(QStringLiteral("QCSyndication"), factoryOf<SyndicationPatch>());
}

}  // namespace runtime
