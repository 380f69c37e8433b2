// Initialisers that a class does not offer stop the process, and say which.
#include "objc/EndpointTest.hpp"

using namespace KeloObjcTest;

namespace {

class UnofferedTest : public EndpointTest {};

/// The text that names an initialiser of a class, to its end.
std::string named(const char *initialiser, Class one) {
    std::string text = std::string("unimplemented initialiser ") + initialiser +
                       " of class KeloAPI." + class_getName(one) + "\n$";
    for (std::size_t i = 0; (i = text.find_first_of("()", i)) != std::string::npos; i += 2) {
        text.insert(i, "\\");
    }
    return text;
}

} // namespace

TEST_F(UnofferedTest, ModelsAreMadeOfSomething) {
    const Class models[] = {
        [KLByline class],
        [KLEndlessLikesRange class],
        [KLEntity class],
        [KLEntityParser class],
        [KLFeedInsert class],
        [KLLongform class],
        [KLLongformViews class],
        [KLPagedDataParser class],
        [KLPagingMetadata class],
        [KLPostAudioMetadata class],
        [KLPostProcessStatus class],
        [KLPostSource class],
        [KLPostsMosaic class],
        [KLSolicitation class],
        [KLTag class],
        [KLUrlAction class],
        [KLUserMosaic class],
        [KLVenue class],
        [KLVenueCategory class],
        [KLVideoUpload class],
        [KLVideoUploadProcessingInfo class],
        [KLVideoUrlBitrateSetting class],
        [KLVideoUrlBitrateSettingParser class],
        [PostThumbnail class],
        [SoundboardSound class],
    };
    for (Class one : models) {
        EXPECT_DEATH([[one alloc] init], named("init()", one));
    }
    EXPECT_DEATH([[KLLoopData alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.LoopData\n$");
}

TEST_F(UnofferedTest, EndpointsAndWhatTheyBring) {
    const Class classes[] = {
        [Endpoint class],       [FileEndpoint class],       [LongformViewsEndpoint class],
        [UserEndpoint class],   [SoundboardEndpoint class], [TimelineEndpoint class],
        [FileManager class],    [FileQueue class],          [MeResult class],
        [TimelineResult class],
    };
    for (Class one : classes) {
        EXPECT_DEATH([[one alloc] init], named("init()", one));
    }
}

TEST_F(UnofferedTest, TheBaseClassesInitialisersAreNotInherited) {
    Session *own = registrySession();
    const Class endpoints[] = {
        [FileEndpoint class],
        [LikeActionEndpoint class],
        [LongformUploadEndpoint class],
        [LongformViewsEndpoint class],
        [LoopsEndpoint class],
        [PostActionEndpoint class],
        [RecommendationsEndpoint class],
        [RekeloActionEndpoint class],
    };
    for (Class one : endpoints) {
        EXPECT_DEATH([static_cast<Endpoint *>([one alloc]) initWithSession:own],
                     named("init(session:)", one));
    }
    const Class inserts[] = {
        [KLPostsMosaic class], [KLSolicitation class], [KLUrlAction class], [KLUserMosaic class]};
    for (Class one : inserts) {
        EXPECT_DEATH([static_cast<KLFeedInsert *>([one alloc]) initWithReference:@"r"
                                                                       closeable:YES],
                     named("init(reference:closeable:)", one));
    }
    const Class actions[] = {[LikeActionEndpoint class], [RekeloActionEndpoint class]};
    for (Class one : actions) {
        id parser = [[PostParser new] autorelease];
        EXPECT_DEATH([static_cast<PostActionEndpoint *>([one alloc]) initWithPost:nil
                                                                           parser:parser],
                     named("init(post:parser:)", one));
    }
}
