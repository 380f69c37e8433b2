#include "objc/ObjcTest.hpp"

#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/model/KLVideoUpload.hpp>
#include <KeloAPIObjC/bridge/Bridge.hpp>

#include <limits>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

KLVideoUpload *upload() {
    return [[[KLVideoUpload alloc] initWithMediaId:@"m1"] autorelease];
}

KLVideoUploadProcessingInfo *info(KLVideoUploadProcessingState state) {
    return [[[KLVideoUploadProcessingInfo alloc] initWithState:state] autorelease];
}

KLPostProcessStatus *status(NSInteger state) {
    return [[[KLPostProcessStatus alloc] initWithState:static_cast<KLPostProcessStatusState>(state)]
        autorelease];
}

} // namespace

TEST(KLVideoUploadTest, StartsWithItsIdentifierAlone) {
    KLVideoUpload *one = upload();
    EXPECT_TRUE(same(one.mediaId, @"m1"));
    EXPECT_EQ(one.expireDate, nil);
    EXPECT_EQ(one.processingInfo, nil);
    EXPECT_EQ(one.size, nil);
}

TEST(KLVideoUploadTest, KeepsWhatIsSet) {
    KLVideoUpload *one = upload();
    NSDate *date = [NSDate dateWithTimeIntervalSince1970:1400000000.25];
    KLVideoUploadProcessingInfo *pending = info(KLVideoUploadProcessingStatePending);
    NSNumber *size = [NSNumber numberWithLongLong:std::numeric_limits<int64_t>::min()];
    one.expireDate = date;
    one.processingInfo = pending;
    one.size = size;
    EXPECT_TRUE(same(one.expireDate, date));
    EXPECT_EQ(one.processingInfo, pending);
    EXPECT_TRUE(same(one.size, size));
    const auto &there = held<KeloAPI::KLVideoUpload>(one);
    EXPECT_EQ(there.processingInfo, shared(pending));
    EXPECT_EQ(there.size, std::numeric_limits<std::int64_t>::min());
    one.expireDate = nil;
    one.processingInfo = nil;
    one.size = nil;
    EXPECT_EQ(one.expireDate, nil);
    EXPECT_EQ(one.processingInfo, nil);
    EXPECT_EQ(one.size, nil);
}

TEST(KLVideoUploadTest, StandsForWhatIsParsed) {
    const auto there = std::make_shared<KeloAPI::KLVideoUpload>("m2");
    there->processingInfo = std::make_shared<KeloAPI::KLVideoUploadProcessingInfo>(
        KeloAPI::KLVideoUploadProcessingState::Failed);
    KLVideoUpload *here = wrap(there);
    ASSERT_TRUE([here isMemberOfClass:[KLVideoUpload class]]);
    ASSERT_TRUE([here.processingInfo isMemberOfClass:[KLVideoUploadProcessingInfo class]]);
    EXPECT_EQ(here.processingInfo.state, KLVideoUploadProcessingStateFailed);
}

TEST(KLVideoUploadProcessingInfoTest, KeepsWhatIsSet) {
    KLVideoUploadProcessingInfo *one = info(KLVideoUploadProcessingStateInProgress);
    EXPECT_EQ(one.state, KLVideoUploadProcessingStateInProgress);
    EXPECT_EQ(one.checkAfterSeconds, nil);
    EXPECT_EQ(one.progressPercent, nil);
    one.checkAfterSeconds = [NSNumber numberWithInt:5];
    one.progressPercent = [NSNumber numberWithDouble:42.5];
    EXPECT_TRUE(same(one.checkAfterSeconds, [NSNumber numberWithDouble:5]));
    EXPECT_TRUE(same(one.progressPercent, [NSNumber numberWithDouble:42.5]));
    one.checkAfterSeconds = nil;
    one.progressPercent = nil;
    EXPECT_EQ(one.checkAfterSeconds, nil);
    EXPECT_EQ(one.progressPercent, nil);
}

TEST(KLVideoUploadProcessingInfoTest, StatesHaveTheirTexts) {
    const std::pair<KLVideoUploadProcessingState, NSString *> texts[] = {
        {KLVideoUploadProcessingStateInProgress, @"in_progress"},
        {KLVideoUploadProcessingStatePending, @"pending"},
        {KLVideoUploadProcessingStateSucceeded, @"succeeded"},
        {KLVideoUploadProcessingStateFailed, @"failed"}};
    for (const auto &[state, text] : texts) {
        EXPECT_EQ(info(state).state, state);
        EXPECT_TRUE(same([KLVideoUploadProcessingInfo rawValueOfState:state], text));
        EXPECT_TRUE(same([KLVideoUploadProcessingInfo stateWithRawValue:text],
                         [NSNumber numberWithInteger:state]));
    }
}

TEST(KLVideoUploadProcessingInfoTest, WhatIsNoState) {
    NSString *const texts[] = {@"done", @"Failed", @"", nil};
    for (NSString *text : texts) {
        EXPECT_EQ([KLVideoUploadProcessingInfo stateWithRawValue:text], nil);
    }
    for (const int number : {-1, 4}) {
        const auto none = static_cast<KLVideoUploadProcessingState>(number);
        NSException *made = raised([&] { info(none); });
        EXPECT_TRUE(same([made name], NSInvalidArgumentException)) << number;
        EXPECT_EQ([KLVideoUploadProcessingInfo rawValueOfState:none], nil) << number;
    }
}

TEST(KLPostProcessStatusTest, KeepsItsState) {
    using State = KeloAPI::KLPostProcessStatusState;
    EXPECT_EQ(status(0).state, KLPostProcessStatusStateStarted);
    EXPECT_EQ(status(1).state, KLPostProcessStatusStateCompleted);
    EXPECT_EQ(status(2).state, KLPostProcessStatusStateFailed);
    EXPECT_EQ(held<KeloAPI::KLPostProcessStatus>(status(1)).state(), State::Completed);
    KLPostProcessStatus *parsed =
        wrap(std::make_shared<KeloAPI::KLPostProcessStatus>(State::Failed));
    ASSERT_TRUE([parsed isMemberOfClass:[KLPostProcessStatus class]]);
    EXPECT_EQ(parsed.state, KLPostProcessStatusStateFailed);
}

TEST(KLPostProcessStatusTest, ThereAreThreeStates) {
    for (const NSInteger none : {NSInteger{-1}, NSInteger{3}, NSInteger{256}}) {
        NSException *exception = raised([&] { status(none); });
        EXPECT_TRUE(same([exception name], NSInvalidArgumentException)) << none;
    }
}

TEST(KLVideoUploadDeathTest, InitialisersThatAreNotOffered) {
    EXPECT_DEATH([[KLVideoUpload alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLVideoUpload\n");
    EXPECT_DEATH([[KLVideoUploadProcessingInfo alloc] init],
                 "init\\(\\) of class KeloAPI.KLVideoUploadProcessingInfo\n");
    EXPECT_DEATH([[KLPostProcessStatus alloc] init],
                 "unimplemented initialiser init\\(\\) of class KeloAPI.KLPostProcessStatus\n");
}
