#include "Calls.hpp"
#include "Steps.hpp"

#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

#include <algorithm>
#include <set>

namespace KeloTour {

using namespace KeloAPI;

namespace {

std::string parameter(const TimelineEndpoint& endpoint, const char* name) {
    const auto query = endpoint.URLRequest().url->query().value_or("");
    const std::string wanted = std::string(name) + "=";
    const auto found = ("&" + query).find("&" + wanted);
    if (found == std::string::npos) {
        return "";
    }
    const auto begin = found + wanted.size();
    return query.substr(begin, query.find('&', begin) - begin);
}

void byNumber() {
    const auto first = read(TimelineEndpoint::create("all"));
    check(first.nextPage != nullptr, "there should be a next page");
    check(parameter(*first.nextPage, "page") == "2", "the next page should be number 2");
    const auto second = read(first.nextPage);
    check(idsOf(second.posts) != idsOf(first.posts), "the second page is the first");
    const auto back = read(second.previousPage);
    check(idsOf(back.posts) == idsOf(first.posts), "the way back leads elsewhere");
    note("page 1, page 2 and back to the same page 1");
}

void byAnchor() {
    const auto first = read(TimelineEndpoint::create("popular"));
    check(first.nextPage != nullptr, "there should be a next page");
    const std::string anchor = parameter(*first.nextPage, "anchor");
    check(!anchor.empty(), "there should be an anchor");
    check(parameter(*first.nextPage, "page").empty(), "there should be no page number");
    const auto second = read(first.nextPage);
    check(idsOf(second.posts) != idsOf(first.posts), "the second page is the first");
    const auto back = read(second.previousPage);
    check(idsOf(back.posts) == idsOf(first.posts), "the way back leads elsewhere");
    note("on by the anchor, and back to the same first page");
}

void byNumericAnchor() {
    const auto first = read(TimelineEndpoint::create("latest"));
    check(first.nextPage != nullptr, "there should be a next page");
    check(parameter(*first.nextPage, "anchor") == *first.posts.back()->postId,
          "this feed's anchor is its last post's number");
    const auto second = read(first.nextPage);
    check(idsOf(second.posts) != idsOf(first.posts), "the second page is the first");
}

void toTheEnd() {
    auto page = TimelineEndpoint::create("editors-picks");
    Parameters parameters = page->parameters();
    parameters["size"] = 10;
    page->setParameters(parameters);
    std::set<std::string> ids;
    std::size_t posts = 0;
    int pages = 0;
    while (page != nullptr && pages < 100) {
        const auto read = KeloTour::read(page);
        const auto more = idsOf(read.posts);
        ids.insert(more.begin(), more.end());
        posts += more.size();
        ++pages;
        page = read.nextPage;
    }
    note(std::to_string(posts) + " posts in " + std::to_string(pages) + " pages, then no next one");
    check(page == nullptr, "the feed does not end");
    check(pages > 1 && ids.size() == posts, "a post came twice");
}

/// One page as the list that a host keeps, with its paging values.
std::shared_ptr<KLPagedData> pageOf(const std::string& path, int number) {
    const auto endpoint = endpointAt(path, {{"page", number}, {"size", 10}});
    sent(endpoint->URLRequest().description() + ", to be read as text");
    const auto document = JsonDocument::parse(readText(endpoint));
    check(static_cast<bool>(document), "that is no JSON");
    const auto data = (*document.value().root().object())["data"].object();
    check(data.has_value(), "there is no data");
    const KLPagedDataParser<PostParser> parser(std::make_shared<PostParser>());
    auto page = parser.parse(*data);
    came(std::to_string(page->count()) + " of " + std::to_string(page->metadata()->count()) +
         " posts, next page " + std::to_string(page->metadata()->nextPage()));
    return page;
}

void appendedPages() {
    const auto list = pageOf("timelines/editors-picks", 1);
    const auto second = pageOf("timelines/editors-picks", 2);
    check(list->count() == 10 && list->hasNextPage(), "the first page should go on");
    list->appendPagedData(*second);
    note("appended: " + std::to_string(list->count()) + " posts");
    check(list->count() == 20, "there should be 20 posts now");
    check(list->metadata() == second->metadata(), "the list should go on where page 2 does");
}

void prependedPages() {
    const auto newer = pageOf("timelines/editors-picks", 1);
    const auto list = pageOf("timelines/editors-picks", 2);
    const auto firstOfAll = newer->objectAtIndex(0);
    const std::int64_t next = list->metadata()->nextPage();
    list->prependPagedData(*newer);
    note("prepended: " + std::to_string(list->count()) + " posts");
    check(list->count() == 20 && list->metadata()->count() == 20, "there should be 20 posts now");
    check(list->objectAtIndex(0) == firstOfAll, "the newer posts should come first");
    check(list->metadata()->nextPage() == next, "the list should go on where it did");
    check(list->metadata()->previousPage() == newer->metadata()->previousPage(),
          "the way back should be the newer page's");
    check(list->remove(firstOfAll) && list->metadata()->count() == 19,
          "removing a post should count");
}

} // namespace

void tourPaging(Tour& tour) {
    tour.step("From page to page by number, and back", byNumber);
    tour.step("From page to page by anchor, and back", byAnchor);
    tour.step("An anchor that is a number", byNumericAnchor);
    tour.step("A timeline to its end", toTheEnd);
    tour.step("Two pages make one list: an older one is appended", appendedPages);
    tour.step("Two pages make one list: a newer one is prepended", prependedPages);
}

} // namespace KeloTour
