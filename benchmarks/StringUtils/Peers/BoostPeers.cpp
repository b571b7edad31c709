// Splitting 1 MB by a string into views against boost::iter_split with a
// first_finder, which also yields ranges into the text.
#include <boost/algorithm/string/finder.hpp>
#include <boost/algorithm/string/iter_find.hpp>
#include <boost/range/iterator_range.hpp>

#include <memory>
#include <string>
#include <vector>

#include "PeerInputs.h"
#include "StringUtils/Split.h"

namespace {

const bool registered = [] {
    auto text = std::make_shared<const std::string>(PeerInputs::words(1 << 20));
    PeerInputs::registerPair(
        "split by string to views 1MB", text->size(),
        [text] { return StringUtils::splitToViews(*text, std::string(",a"), false).size(); },
        [text] {
            std::vector<boost::iterator_range<std::string::const_iterator>> fields;
            boost::algorithm::iter_split(fields, *text, boost::algorithm::first_finder(",a"));
            return fields.size();
        });
    return true;
}();

}  // namespace
