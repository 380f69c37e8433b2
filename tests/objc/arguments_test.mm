#include "objc/Models.hpp"
#include "objc/ObjcTest.hpp"
#include "objc/Told.hpp"

#include <functional>
#include <string>
#include <vector>

using namespace KeloObjcTest;

namespace {

struct Call {
    std::string name;
    std::function<void()> make;
};

/// The reason of the `NSInvalidArgumentException` that the call raises; empty for anything else.
std::string reasonOf(const Call &call) {
    NSException *exception = raised(call.make);
    return [[exception name] isEqual:NSInvalidArgumentException] ? [[exception reason] UTF8String]
                                                                 : "";
}

Session *anySession() {
    return [[[Session alloc] initWithSessionType:SessionTypeUnAuthenticated] autorelease];
}

Endpoint *anyEndpoint() {
    return [[[Endpoint alloc] initWithSession:anySession()] autorelease];
}

FileQueue *anyQueue() {
    return [FileQueue withKey:@"arguments"];
}

/// The metadata of a page without any.
KLPagingMetadata *anyMetadata() {
    return [[[KLPagingMetadata alloc] initWithJson:nil] autorelease];
}

/// Each call that cannot do without an argument, by that argument's name.
std::vector<Call> callsThatNeed() {
    NSURL *none = nil; // else the compiler has no type for it
    id target = nil;
    return {
        {"session", [] { [[Endpoint alloc] initWithSession:nil]; }},
        {"certificates", [] { [anySession() pinCertificates:nil]; }},
        {"session", [] { [[MeEndpoint alloc] initWithSession:nil]; }},
        {"session", [] { [[UserEndpoint alloc] initWithSession:nil]; }},
        {"session", [] { [[UserEndpoint alloc] initWithSession:nil userId:@"1"]; }},
        {"session", [] { [[SoundboardEndpoint alloc] initWithSession:nil]; }},
        {"session", [] { [[TimelineEndpoint alloc] initWithSession:nil]; }},
        {"fileManager", [] { [[FileEndpoint alloc] initWithPath:@"a" fileManager:nil]; }},
        {"parser", [] { [[PostActionEndpoint alloc] initWithPost:nil parser:nil]; }},
        {"parser", [=] { [anyEndpoint() requestWithParser:nil target:target action:nullptr]; }},
        {"parser",
         [=] { [anyEndpoint() uploadWithParser:nil data:nil target:target action:nullptr]; }},
        {"itemParser", [] { [[KLPagedDataParser alloc] initWithItemParser:nil]; }},
        {"method", [] { anyEndpoint().method = nil; }},
        {"destinationUrl",
         [=] { [anyEndpoint() downloadWithDestinationUrl:none target:target action:nullptr]; }},
        {"captchaUrl",
         [=] {
             [anySession() endpointRequiresCaptcha:nil
                                        captchaUrl:none
                                       retryTarget:target
                                            action:nullptr];
         }},
        {"destination",
         [=] {
             [[[[FileEndpoint alloc] initWithPath:@"a"
                                      fileManager:[FileManager sharedGroupManager:@"/none/"]]
                 autorelease] downloadTo:none target:target action:nullptr];
         }},
        {"endpoint", [=] { [anyQueue() download:nil to:none target:target action:nullptr]; }},
        {"post", [] { [[[LoopsEndpoint new] autorelease] submitWithCount:1 post:nil]; }},
        {"posts",
         [] {
             [[KLPostsMosaic alloc] initWithPosts:nil
                                            title:nil
                                      description:nil
                                             link:nil
                                        reference:nil
                                        closeable:NO
                                             type:KLPostsMosaicTypeDefault
                                         pinnable:NO];
         }},
        {"users",
         [] {
             [[KLUserMosaic alloc] initWithUsers:nil
                                           title:nil
                                     description:nil
                                            link:nil
                                       reference:nil
                                       closeable:NO];
         }},
        {"actionUrl",
         [=] {
             [[KLUrlAction alloc] initWithReference:nil
                                              title:nil
                                        actionTitle:nil
                                          actionUrl:none
                                          closeable:nil
                                    backgroundImage:none
                                    backgroundVideo:none
                                            details:nil
                                         actionIcon:none
                                       closeUrlPath:nil];
         }},
        {"url", [=] { [[PostThumbnail alloc] initWithUrl:none width:1 height:1]; }},
        {"url", [=] { [[KLLongform alloc] initWithLongformId:nil url:none duration:1]; }},
        {"remoteUrl",
         [=] {
             [[KLVideoUrlBitrateSetting alloc] initWithRemoteUrl:none
                                                          format:nil
                                                      identifier:nil
                                                      minBitrate:0
                                                         version:nil];
         }},
        {"count",
         [] { [[KLLoopData alloc] initWithCount:nil velocity:[NSNumber numberWithInt:1]]; }},
        {"velocity",
         [] { [[KLLoopData alloc] initWithCount:[NSNumber numberWithInt:1] velocity:nil]; }},
        {"count", [] { wholeLoops().count = nil; }},
        {"velocity", [] { wholeLoops().velocity = nil; }},
        {"created", [] { wholeLoops().created = nil; }},
        {"metadata", [] { [[KLPagingMetadata alloc] initWithMetadata:nil]; }},
        {"metadata",
         [] { [[KLPagingMetadata alloc] initWithCount:1 metadata:nil prepend:anyMetadata()]; }},
        {"prepend",
         [] { [[KLPagingMetadata alloc] initWithCount:1 metadata:anyMetadata() prepend:nil]; }},
        {"metadata", [] { [[KLPagedData alloc] initWithData:[NSArray array] metadata:nil]; }},
        {"metadata", [] { page().metadata = nil; }},
        {"object", [] { [page() append:nil]; }},
        {"object", [] { [page() addObject:nil]; }},
        {"object", [] { [page() insert:nil atIndex:0]; }},
        {"object", [] { [page() insertObject:nil atIndex:0]; }},
        {"object", [] { [page() setObject:nil atIndexedSubscript:0]; }},
        {"other", [] { [page() appendPagedData:nil]; }},
        {"other", [] { [page() prependPagedData:nil]; }},
        {"date", [] { [MainQueue runUntilDate:nil]; }},
        {"runLoop", [] { [MainQueue addToRunLoop:nil forMode:NSDefaultRunLoopMode]; }},
        {"runLoop", [] { [MainQueue removeFromRunLoop:nil forMode:NSDefaultRunLoopMode]; }},
    };
}

} // namespace

TEST(ArgumentsTest, NilForOneThatMustBeThereIsTold) {
    for (const Call &call : callsThatNeed()) {
        EXPECT_EQ(reasonOf(call), "the argument " + call.name + " is nil");
    }
}

TEST(ArgumentsTest, WhatIsRefusedChangesNothing) {
    KLLoopData *data = wholeLoops();
    raised([=] { data.count = nil; });
    raised([=] { data.velocity = nil; });
    raised([=] { data.created = nil; });
    EXPECT_EQ(told(data, loopKeys), "42 2.5 1400000000.25s 1");
}

TEST(ArgumentsTest, NilIsTakenWhereAbsenceHasAMeaning) {
    KLPagedData *empty = page();
    [empty addPagedData:nil];
    EXPECT_FALSE([empty remove:nil]);
    Session *session = anySession();
    session.delegate = nil;
    [session endpointRequiresAuth:nil retryTarget:nil action:nullptr];
    EXPECT_NE(
        [[[PostActionEndpoint alloc] initWithPost:nil
                                           parser:[[KLEmptyParser new] autorelease]] autorelease],
        nil);
    EXPECT_EQ(empty.count, 0);
}

TEST(ArgumentsTest, WhatHasNoPlaceIsTold) {
    id number = [NSNumber numberWithInt:1];
    EXPECT_EQ(reasonOf({"", [=] { [[Endpoint alloc] initWithSession:number]; }}),
              "an object of class " + std::string(class_getName([number class])) +
                  " has no place here");
    EXPECT_EQ(reasonOf({"", [] { [[[KLLike alloc] autorelease] user]; }}),
              "an object of class KLLike was never initialised");
    EXPECT_EQ(reasonOf({"", [] { [page() append:[[KLLike alloc] autorelease]]; }}),
              "an object of class KLLike was never initialised");
}

TEST(ArgumentsTest, ASecondInitialisationIsRefused) {
    KLTag *tag = [[[KLTag alloc] initWithName:@"cats"] autorelease];
    EXPECT_EQ(reasonOf({"", [=] { [tag initWithName:@"dogs"]; }}),
              "an object of class KLTag is initialised already");
    EXPECT_TRUE(same(tag.name, @"#cats"));
    KLEmpty *empty = [[KLEmpty new] autorelease];
    EXPECT_EQ(reasonOf({"", [=] { [empty init]; }}),
              "an object of class KLEmpty is initialised already");
    MeResult *result = [[[MeResult alloc] initWithContent:tag error:nil] autorelease];
    EXPECT_EQ(reasonOf({"", [=] { [result initWithContent:nil error:nil]; }}),
              "an object of class MeResult is initialised already");
    EXPECT_EQ([result content], tag);
}

TEST(ArgumentsTest, ObjectsThatAreNotArchivedSayIt) {
    id object = [[KLWatchPost new] autorelease];
    id list = [NSArray arrayWithObject:object];
    lettingLeak([=] { // GNUstep's archiver loses what it has written when an object raises
        for (id root : {object, list}) {
            EXPECT_EQ(reasonOf({"", [=] { [NSKeyedArchiver archivedDataWithRootObject:root]; }}),
                      "objects of class KLWatchPost are not archived");
        }
    });
}
