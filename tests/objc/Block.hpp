#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <utility>

namespace KeloObjcTest {

/// Where a block is kept, as its flags say.
enum BlockFlags { StackBlock = 0, HeapBlock = 1 << 24, GlobalBlock = 1 << 28 };

/// A block as a compiler that has them lays it out in memory. It stays where it is, as its flags
/// say by default: what it is given to must be done with it before it goes.
template <class... Values>
class Block {
public:
    explicit Block(std::function<void(Values...)> body, BlockFlags flags = GlobalBlock)
        : _body(std::move(body))
        , _layout{nullptr, flags, 0, &Block::invoke, nullptr, this} {}
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;

    id object() { return reinterpret_cast<id>(&_layout); }

private:
    struct Layout {
        void *isa;
        int flags;
        int reserved;
        void (*invoke)(Layout *, Values...);
        const void *descriptor;
        Block *block;
    };
    static void invoke(Layout *layout, Values... values) { layout->block->_body(values...); }

    std::function<void(Values...)> _body;
    Layout _layout;
};

} // namespace KeloObjcTest

/// The methods that take blocks, which the headers show only to a compiler that has them.
@protocol BlockForms
- (void)endpointRequiresAuth:(id)endpoint retry:(id)retry;
- (void)endpointRequiresCaptcha:(id)endpoint captchaUrl:(NSURL *)captchaUrl retry:(id)retry;
- (id)requestWithCompletionHandler:(id)handler;
- (id)requestWithParser:(id)parser completionHandler:(id)handler;
- (id)uploadWithParser:(id)parser data:(NSData *)data completionHandler:(id)handler;
- (void)downloadWithDestinationUrl:(NSURL *)destinationUrl completionHandler:(id)handler;
- (void)setDownloadProgressHandler:(id)handler;
- (void)setProgressHandler:(id)handler;
- (id)progressHandler;
- (void)get:(id)completion;
- (void)fetch:(id)completion;
- (void)setFollowingOnTwitter:(BOOL)following completion:(id)completion;
- (void)toggleOn:(BOOL)on completion:(id)completion;
- (void)addUserFeedback:(NSString *)userId boost:(NSInteger)boost completion:(id)completion;
- (void)addPostFeedback:(NSString *)postId boost:(NSInteger)boost completion:(id)completion;
- (id)fetchSoundsWithCompletion:(id)completion;
- (id)fetchViewsWithCompletion:(id)completion;
- (id)submitViewWithCompletion:(id)completion;
- (id)initiateUploadWithTotalBytes:(NSInteger)totalBytes completion:(id)completion;
- (id)uploadSegmentWithMediaId:(NSString *)mediaId
                          data:(NSData *)data
                  segmentIndex:(NSInteger)segmentIndex
                    completion:(id)completion;
- (id)finalizeUploadWithMediaId:(NSString *)mediaId completion:(id)completion;
- (id)checkStatusWithMediaId:(NSString *)mediaId completion:(id)completion;
- (void)downloadTo:(NSURL *)destination completion:(id)completion;
- (void)download:(id)endpoint to:(NSURL *)url completion:(id)completion;
- (void)download:(id)endpoint
              to:(NSURL *)url
        priority:(NSInteger)priority
      completion:(id)completion;
+ (void)setSink:(id)sink;
@end
