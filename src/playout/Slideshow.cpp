#include "playout/Slideshow.h"

#include <algorithm>

namespace playout {

void Slideshow::start(std::vector<Document> documents)
{
    documents_ = std::move(documents);
    documents_.erase(std::remove(documents_.begin(), documents_.end(), nullptr), documents_.end());
    index_ = 0;
}

void Slideshow::stop()
{
    documents_.clear();
    index_ = 0;
}

Slideshow::Document Slideshow::current() const
{
    return documents_.empty() ? nullptr : documents_[std::size_t(index_)];
}

Slideshow::Document Slideshow::next()
{
    if (documents_.empty()) return nullptr;
    index_ = (index_ + 1) % int(documents_.size());
    return current();
}

void Slideshow::remove(Document document)
{
    const auto found = std::find(documents_.begin(), documents_.end(), document);
    if (found == documents_.end()) return;
    const int removed = int(found - documents_.begin());
    documents_.erase(found);
    const int count = int(documents_.size());
    // The index steps back so that next() lands on the document that came
    // after the one removed.
    if (removed < index_)
        --index_;
    else if (removed == index_)
        index_ = count == 0 ? 0 : (removed + count - 1) % count;
}

}  // namespace playout
