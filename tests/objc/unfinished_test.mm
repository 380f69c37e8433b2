#include "objc/HostCode.h"
#include "objc/KeyedArchives.hpp"
#include "objc/ObjcTest.hpp"

#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <functional>
#include <string>

using namespace KeloObjcTest;

namespace {

int gone = 0;

void countGone(id object, SEL selector) {
    gone++;
    Class parent = class_getSuperclass(object_getClass(object));
    class_getMethodImplementation(parent, selector)(object, selector);
}

/// Derived from `base`; counts its objects that go.
Class counted(Class base) {
    const std::string name = std::string("Counted") + class_getName(base);
    Class made = objc_getClass(name.c_str());
    if (made == Nil) {
        made = objc_allocateClassPair(base, name.c_str(), 0);
        class_addMethod(made, @selector(dealloc),
                        reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(countGone)), "v@:");
        objc_registerClassPair(made);
    }
    return made;
}

using Initialise = std::function<void(id object)>;

/// Whether an initialiser that raises lets its object go.
testing::AssertionResult letsGo(Class base, const Initialise &initialise) {
    gone = 0;
    id object = [counted(base) alloc];
    if (raised([&] { initialise(object); }) == nil) {
        return testing::AssertionFailure() << class_getName(base) << " raises nothing";
    }
    return gone == 1 ? testing::AssertionSuccess()
                     : testing::AssertionFailure() << class_getName(base) << " stays";
}

} // namespace

TEST(UnfinishedTest, ModelsGo) {
    id none = nil;
    EXPECT_TRUE(letsGo([PostThumbnail class],
                       [=](PostThumbnail *object) { [object initWithUrl:none width:1 height:1]; }));
    EXPECT_TRUE(letsGo([KLPagingMetadata class],
                       [=](KLPagingMetadata *object) { [object initWithMetadata:none]; }));
    EXPECT_TRUE(letsGo([KLPagingMetadata class], [=](KLPagingMetadata *object) {
        [object initWithCount:1 metadata:none prepend:none];
    }));
    id other = [NSArray arrayWithObject:@"x"];
    EXPECT_TRUE(letsGo([KLPagedData class], [=](KLPagedData *object) {
        [object initWithData:[NSArray array] metadata:other];
    }));
}

TEST(UnfinishedTest, EndpointsGo) {
    id other = [[NSObject new] autorelease];
    for (Class one : {[Endpoint class],
                      [MeEndpoint class],
                      [TimelineEndpoint class],
                      [UserEndpoint class],
                      [SoundboardEndpoint class]}) {
        EXPECT_TRUE(letsGo(one, [=](Endpoint *object) { [object initWithSession:other]; }));
    }
    EXPECT_TRUE(letsGo([UserEndpoint class],
                       [=](UserEndpoint *object) { [object initWithSession:other userId:@"1"]; }));
    EXPECT_TRUE(letsGo([LikeActionEndpoint class],
                       [=](LikeActionEndpoint *object) { [object initWithPost:other]; }));
    EXPECT_TRUE(letsGo([RekeloActionEndpoint class],
                       [=](RekeloActionEndpoint *object) { [object initWithPost:other]; }));
    EXPECT_TRUE(letsGo([PostActionEndpoint class], [=](PostActionEndpoint *object) {
        [object initWithPost:nil parser:other];
    }));
    EXPECT_TRUE(letsGo([FileEndpoint class], [=](FileEndpoint *object) {
        [object initWithPath:@"p" fileManager:other];
    }));
}

TEST(UnfinishedTest, WhatAnArchiveCannotGiveGoes) {
    NSDictionary *members = [NSDictionary dictionaryWithObject:[[Unreadable new] autorelease]
                                                        forKey:@"range"];
    NSData *archive = KeloArchiveOf(@"KLEntity", members);
    gone = 0;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSKeyedUnarchiver *coder = [[NSKeyedUnarchiver alloc] initForReadingWithData:archive];
    [coder setClass:counted([KLEntity class]) forClassName:@"KLEntity"];
    EXPECT_NE(raised([&] { [coder decodeObjectForKey:@"root"]; }), nil);
    [coder release];
    [pool drain];
    EXPECT_EQ(gone, 1);
}

TEST(UnfinishedTest, WhatAnArchiveLacksGoes) {
    NSKeyedUnarchiver *empty = [[[NSKeyedUnarchiver alloc]
        initForReadingWithData:[NSKeyedArchiver archivedDataWithRootObject:@"x"]] autorelease];
    gone = 0;
    id thumbnail = [counted([PostThumbnail class]) alloc];
    EXPECT_EQ([thumbnail initWithCoder:empty], nil);
    id source = [counted([KLPostSource class]) alloc];
    EXPECT_EQ([source initWithJSON:json("{}")], nil);
    EXPECT_EQ(gone, 2);
}
