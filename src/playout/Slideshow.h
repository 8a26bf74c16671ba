#pragma once
// The order of a slideshow: every listed document in turn, starting over
// after the last, for as long as it runs. A document closed meanwhile
// leaves the list.

#include <vector>

namespace document {
class CompositionDocument;
}

namespace playout {

class Slideshow {
public:
    using Document = const document::CompositionDocument*;

    void start(std::vector<Document> documents);
    void stop();
    bool isRunning() const { return !documents_.empty(); }
    int index() const { return index_; }
    Document current() const;
    // Moves on (past the last, to the first) and answers the new current.
    Document next();
    // Drops a document that is going away; the one after it comes next.
    void remove(Document document);
    const std::vector<Document>& documents() const { return documents_; }

private:
    std::vector<Document> documents_;
    int index_ = 0;
};

}  // namespace playout
