// The Apple interfaces Tidewick's Objective-C++ files use, declared as
// Apple's documentation gives them, so that tools/check-macos-sources.sh can
// compile those files on Linux. Only what the code uses, one section per
// framework; each declaration names the documentation page it is written
// from (under https://developer.apple.com/documentation/). Macros that
// expand to availability or nullability annotations are left out: they do
// not change what a call may pass or get back.
//
// Each declaration newer than macOS 10.9 carries the version its page gives
// (TW_MACOS(v)), so that the check, which compiles for macOS 13 with
// unguarded-availability as an error, refuses a call newer than the
// deployment target; the rest are from 10.9 or before.
//
// Adding an interface: write it into its framework's section from its page,
// with the page's path in a comment above it and, when it is newer than
// 10.9, its availability; run the check.
#pragma once

#define TW_MACOS(version) __attribute__((availability(macos, introduced = version)))

#include <stddef.h>
#include <stdint.h>

// ---------------------------------------------------------------- Objective-C runtime
// objectivec/bool: bool on Apple silicon, signed char on Intel Macs (objc.h
// sets OBJC_BOOL_IS_BOOL to 0 for macOS on x86_64)
#if defined(__x86_64__)
typedef signed char BOOL;
#else
typedef bool BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
// objectivec/nil
#define nil nullptr
// objectivec/nsinteger, objectivec/nsuinteger (64-bit)
typedef long NSInteger;
typedef unsigned long NSUInteger;

// ---------------------------------------------------------------- Core Foundation
// corefoundation/cftyperef
typedef const void* CFTypeRef;
// corefoundation/cftypeid
typedef unsigned long CFTypeID;
// corefoundation/cfallocatorref, corefoundation/kcfallocatordefault
typedef const struct __CFAllocator* CFAllocatorRef;
extern "C" const CFAllocatorRef kCFAllocatorDefault;
// corefoundation/cfstringref: toll-free bridged with NSString
typedef const struct __attribute__((objc_bridge(NSString))) __CFString* CFStringRef;
// corefoundation/cfurlref: toll-free bridged with NSURL
typedef const struct __attribute__((objc_bridge(NSURL))) __CFURL* CFURLRef;
// corefoundation/cfnumberref: toll-free bridged with NSNumber; corefoundation/boolean
typedef const struct __attribute__((objc_bridge(NSNumber))) __CFNumber* CFNumberRef;
typedef unsigned char Boolean;
// corefoundation/cfdictionaryref, corefoundation/cfmutabledictionaryref
typedef const struct __attribute__((objc_bridge(NSDictionary))) __CFDictionary* CFDictionaryRef;
typedef struct __attribute__((objc_bridge_mutable(NSMutableDictionary))) __CFDictionary* CFMutableDictionaryRef;
extern "C" {
// corefoundation/cfrelease(_:)
void CFRelease(CFTypeRef cf);
// corefoundation/cfgettypeid(_:)
CFTypeID CFGetTypeID(CFTypeRef cf);
// corefoundation/cfdictionarygettypeid(), corefoundation/cfstringgettypeid()
CFTypeID CFDictionaryGetTypeID(void);
CFTypeID CFStringGetTypeID(void);
// corefoundation/cfbooleangettypeid()
CFTypeID CFBooleanGetTypeID(void);
// corefoundation/cfnumberisfloattype(_:)
Boolean CFNumberIsFloatType(CFNumberRef number);
// corefoundation/cfdictionarygetvalue(_:_:)
const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key);
}
// corefoundation/cfstr: a constant CFString from a literal
#define CFSTR(cStr) ((CFStringRef)__builtin___CFStringMakeConstantString("" cStr ""))

// ---------------------------------------------------------------- Core Graphics
// corefoundation/cgfloat (64-bit)
typedef double CGFloat;
// corefoundation/cgpoint, corefoundation/cgsize, corefoundation/cgrect
struct CGPoint { CGFloat x; CGFloat y; };
typedef struct CGPoint CGPoint;
struct CGSize { CGFloat width; CGFloat height; };
typedef struct CGSize CGSize;
struct CGRect { CGPoint origin; CGSize size; };
typedef struct CGRect CGRect;
extern "C" {
// corefoundation/cgrect/init(x:y:width:height:) (CGRectMake in C)
CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height);
}
// coregraphics/cgimage, coregraphics/cgcolorspace, coregraphics/cgcontext
typedef struct CGImage* CGImageRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGContext* CGContextRef;
// coregraphics/cgimagealphainfo: an enumeration of its own
enum CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNone,
    kCGImageAlphaPremultipliedLast,
    kCGImageAlphaPremultipliedFirst,
    kCGImageAlphaLast,
    kCGImageAlphaFirst,
    kCGImageAlphaNoneSkipLast,
    kCGImageAlphaNoneSkipFirst,
    kCGImageAlphaOnly,
};
typedef enum CGImageAlphaInfo CGImageAlphaInfo;
// coregraphics/cgbitmapinfo: options, a second enumeration
typedef uint32_t CGBitmapInfo;
enum : uint32_t {
    kCGBitmapAlphaInfoMask = 0x1F,
    kCGBitmapFloatComponents = (1 << 8),
    kCGBitmapByteOrderMask = 0x7000,
    kCGBitmapByteOrderDefault = (0 << 12),
    kCGBitmapByteOrder16Little = (1 << 12),
    kCGBitmapByteOrder32Little = (2 << 12),
    kCGBitmapByteOrder16Big = (3 << 12),
    kCGBitmapByteOrder32Big = (4 << 12),
};
// coregraphics/kcgbitmapbyteorder32host (little-endian hosts)
#define kCGBitmapByteOrder32Host kCGBitmapByteOrder32Little
extern "C" {
// coregraphics/cgcolorspacecreatedevicergb()
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
// coregraphics/cgcolorspacerelease
void CGColorSpaceRelease(CGColorSpaceRef space);
// coregraphics/cgcontext/init(data:width:height:bitspercomponent:bytesperrow:space:bitmapinfo:);
// the C form takes uint32_t (Apple's "CoreGraphics Changes for Objective-C", macOS 10.11 API diffs)
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo);
// coregraphics/cgcontext/draw(_:in:bytiling:)
void CGContextDrawImage(CGContextRef c, CGRect rect, CGImageRef image);
// coregraphics/cgcontextrelease
void CGContextRelease(CGContextRef c);
}

// ---------------------------------------------------------------- Dispatch
// dispatch/dispatch_object_t: objects under ARC when compiled as Objective-C
@class NSObject;
@protocol NSObject;
@protocol OS_dispatch_object <NSObject>
@end
// dispatch/dispatch_queue_t, dispatch/dispatch_semaphore_t
@protocol OS_dispatch_queue <OS_dispatch_object>
@end
typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
@protocol OS_dispatch_queue_global <OS_dispatch_queue>
@end
typedef NSObject<OS_dispatch_queue_global>* dispatch_queue_global_t;
@protocol OS_dispatch_semaphore <OS_dispatch_object>
@end
typedef NSObject<OS_dispatch_semaphore>* dispatch_semaphore_t;
// dispatch/dispatch_time_t, dispatch/dispatch_time_forever
typedef uint64_t dispatch_time_t;
#define DISPATCH_TIME_FOREVER (~0ull)
// dispatch/dispatch_block_t
typedef void (^dispatch_block_t)(void);
// dispatch/qos_class_t
enum qos_class_t : unsigned int {
    QOS_CLASS_USER_INTERACTIVE = 0x21,
    QOS_CLASS_USER_INITIATED = 0x19,
    QOS_CLASS_DEFAULT = 0x15,
    QOS_CLASS_UTILITY = 0x11,
    QOS_CLASS_BACKGROUND = 0x09,
    QOS_CLASS_UNSPECIFIED = 0x00,
};
extern "C" {
// dispatch/dispatch_get_global_queue(_:_:)
dispatch_queue_global_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
// dispatch/dispatch_async(_:_:)
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
// dispatch/dispatch_semaphore_create(_:)
dispatch_semaphore_t dispatch_semaphore_create(intptr_t value);
// dispatch/dispatch_semaphore_signal(_:)
intptr_t dispatch_semaphore_signal(dispatch_semaphore_t dsema);
// dispatch/dispatch_semaphore_wait(_:_:)
intptr_t dispatch_semaphore_wait(dispatch_semaphore_t dsema, dispatch_time_t timeout);
}

// ---------------------------------------------------------------- Foundation
@class NSString, NSURL, NSData, NSError, NSArray<ObjectType>, NSDictionary<KeyType, ObjectType>;

// objectivec/nsobjectprotocol
@protocol NSObject
- (BOOL)isEqual:(id)object;
- (BOOL)isKindOfClass:(Class)aClass;
@end
// objectivec/nsobject
__attribute__((objc_root_class))
@interface NSObject <NSObject>
+ (instancetype)alloc;
- (instancetype)init;
+ (instancetype)new;
+ (Class)class;
@end

// foundation/nsfastenumeration, foundation/nsfastenumerationstate
typedef struct {
    unsigned long state;
    id __unsafe_unretained* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)len;
@end

// foundation/nsstringencoding, foundation/nsutf8stringencoding
typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };
// foundation/nsstring
@interface NSString : NSObject
// foundation/nsstring/init(bytes:length:encoding:)
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)len encoding:(NSStringEncoding)encoding;
// foundation/nsstring/filesystemrepresentation
@property(readonly) const char* fileSystemRepresentation __attribute__((objc_returns_inner_pointer));
// foundation/nsstring/isequal(to:)
- (BOOL)isEqualToString:(NSString*)aString;
@end

// foundation/nsdata
@interface NSData : NSObject
// foundation/nsdata/bytes, foundation/nsdata/length
@property(readonly) const void* bytes __attribute__((objc_returns_inner_pointer));
@property(readonly) NSUInteger length;
@end

// foundation/nsnumber
@interface NSNumber : NSObject
@property(readonly) long long longLongValue;
@property(readonly) BOOL boolValue;
// foundation/nsnumber/doublevalue, foundation/nsnumber/uint64value, foundation/nsnumber/objctype
@property(readonly) double doubleValue;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly) const char* objCType __attribute__((objc_returns_inner_pointer));
// foundation/nsnumber/init(value:) (numberWithBool:, numberWithLongLong:, numberWithDouble:)
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
@end

// foundation/nsdate
@interface NSDate : NSObject
@end

// foundation/nserror
@interface NSError : NSObject
// foundation/nserror/localizeddescription
@property(readonly, copy) NSString* localizedDescription;
@end

// foundation/nsarray: array literals go through arrayWithObjects:count:
@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)cnt;
@end
// foundation/nsmutablearray
@interface NSMutableArray<ObjectType> : NSArray<ObjectType>
// foundation/nsmutablearray/init(capacity:)
+ (instancetype)arrayWithCapacity:(NSUInteger)numItems;
// foundation/nsmutablearray/add(_:)
- (void)addObject:(ObjectType)anObject;
@end

// foundation/nsdictionary: subscripts go through objectForKeyedSubscript:
@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end
// foundation/nsmutabledictionary
@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary<KeyType, ObjectType>
// foundation/nsmutabledictionary/init() (the class method dictionary)
+ (instancetype)dictionary;
// foundation/nsmutabledictionary/setobject(_:forkey:)
- (void)setObject:(ObjectType)anObject forKey:(KeyType)aKey;
@end

// foundation/propertylistserialization/propertylistformat
typedef NSUInteger NSPropertyListFormat;
enum : NSPropertyListFormat {
    NSPropertyListOpenStepFormat = 1,
    NSPropertyListXMLFormat_v1_0 = 100,
    NSPropertyListBinaryFormat_v1_0 = 200,
};
// foundation/propertylistserialization/mutabilityoptions
typedef NSUInteger NSPropertyListMutabilityOptions;
enum : NSPropertyListMutabilityOptions { NSPropertyListImmutable = 0 };
typedef NSPropertyListMutabilityOptions NSPropertyListReadOptions;
typedef NSUInteger NSPropertyListWriteOptions;
// foundation/propertylistserialization
@interface NSPropertyListSerialization : NSObject
// foundation/propertylistserialization/propertylist(from:options:format:)
+ (id)propertyListWithData:(NSData*)data
                   options:(NSPropertyListReadOptions)opt
                    format:(NSPropertyListFormat*)format
                     error:(out NSError* _Nullable __autoreleasing*)error;
// foundation/propertylistserialization/data(fromPropertyList:format:options:)
+ (NSData*)dataWithPropertyList:(id)plist
                         format:(NSPropertyListFormat)format
                        options:(NSPropertyListWriteOptions)opt
                          error:(out NSError* _Nullable __autoreleasing*)error;
@end

// foundation/urlresourcekey
typedef NSString* NSURLResourceKey;
extern "C" {
// foundation/nsurlvolumeurlkey
extern const NSURLResourceKey NSURLVolumeURLKey;
// foundation/nsurlvolumetotalcapacitykey
extern const NSURLResourceKey NSURLVolumeTotalCapacityKey;
// foundation/nsurlvolumeavailablecapacitykey
extern const NSURLResourceKey NSURLVolumeAvailableCapacityKey;
// foundation/nsurlvolumeavailablecapacityforimportantusagekey
extern const NSURLResourceKey NSURLVolumeAvailableCapacityForImportantUsageKey TW_MACOS(10.13);
// foundation/nsurlvolumeislocalkey
extern const NSURLResourceKey NSURLVolumeIsLocalKey;
}
// foundation/nsurl
@interface NSURL : NSObject
// foundation/nsurl/fileurl(withpath:)
+ (NSURL*)fileURLWithPath:(NSString*)path;
// foundation/nsurl/init(filewithfilesystemrepresentation:isdirectory:relativeto:)
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDir
                                relativeToURL:(NSURL*)baseURL;
// foundation/nsurl/path
@property(readonly, copy) NSString* path;
// foundation/nsurl/filesystemrepresentation
@property(readonly) const char* fileSystemRepresentation __attribute__((objc_returns_inner_pointer));
// foundation/nsurl/getresourcevalue(_:forkey:)
- (BOOL)getResourceValue:(out id _Nullable __autoreleasing*)value
                  forKey:(NSURLResourceKey)key
                   error:(out NSError* _Nullable __autoreleasing*)error;
// foundation/nsurl/resourcevalues(forkeys:)
- (NSDictionary<NSURLResourceKey, id>*)resourceValuesForKeys:(NSArray<NSURLResourceKey>*)keys
                                                       error:(NSError* _Nullable __autoreleasing*)error;
@end

// foundation/filemanager
@interface NSFileManager : NSObject
// foundation/filemanager/default
@property(class, readonly, strong) NSFileManager* defaultManager;
// foundation/filemanager/string(withfilesystemrepresentation:length:)
- (NSString*)stringWithFileSystemRepresentation:(const char*)str length:(NSUInteger)len;
// foundation/filemanager/moveitem(at:to:)  (fails when an item stands at dstURL)
- (BOOL)moveItemAtURL:(NSURL*)srcURL toURL:(NSURL*)dstURL error:(NSError**)error;
@end
extern "C" {
// foundation/nshomedirectory()
NSString* NSHomeDirectory(void);
}

// foundation/filehandle
@interface NSFileHandle : NSObject
// foundation/filehandle/nulldevice
@property(class, readonly, strong) NSFileHandle* fileHandleWithNullDevice;
// foundation/filehandle/readtoend()
- (nullable NSData*)readDataToEndOfFileAndReturnError:(NSError**)error TW_MACOS(10.15.4);
@end

// foundation/pipe
@interface NSPipe : NSObject
// foundation/pipe/init()
+ (NSPipe*)pipe;
// foundation/pipe/filehandleforreading
@property(readonly, strong) NSFileHandle* fileHandleForReading;
@end

// foundation/process
@interface NSTask : NSObject
// foundation/process/executableurl
@property(copy) NSURL* executableURL TW_MACOS(10.13);
// foundation/process/launchpath
@property(copy) NSString* launchPath;
// foundation/process/arguments
@property(copy) NSArray<NSString*>* arguments;
// foundation/process/standardoutput, foundation/process/standarderror: an NSPipe or an NSFileHandle
@property(retain) id standardOutput;
@property(retain) id standardError;
// foundation/process/run()
- (BOOL)launchAndReturnError:(out NSError* _Nullable __autoreleasing*)error TW_MACOS(10.13);
// foundation/process/waituntilexit()
- (void)waitUntilExit;
// foundation/process/terminationstatus
@property(readonly) int terminationStatus;
@end

// foundation/cfbridgingrelease(_:)
inline id CFBridgingRelease(CFTypeRef X)
{
    return (__bridge_transfer id)X;
}

// foundation/nskeyvalueobservingoptions
typedef NSUInteger NSKeyValueObservingOptions;
// foundation/nskeyvaluechangekey
typedef NSString* NSKeyValueChangeKey;
// objectivec/nsobject/1412787-addobserver, objectivec/nsobject/1408054-removeobserver,
// objectivec/nsobject/1416553-observevalue (the NSKeyValueObserving informal protocol)
@interface NSObject (NSKeyValueObserving)
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath;
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(void*)context;
@end

// foundation/nsnotification/name
typedef NSString* NSNotificationName;
@class NSOperationQueue;
// foundation/nsnotification
@interface NSNotification : NSObject
@end
// foundation/notificationcenter
@interface NSNotificationCenter : NSObject
// foundation/notificationcenter/default
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
// foundation/notificationcenter/addobserver(forname:object:queue:using:)
- (id<NSObject>)addObserverForName:(NSNotificationName)name
                            object:(id)obj
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
// foundation/notificationcenter/removeobserver(_:)
- (void)removeObserver:(id)observer;
@end

// ---------------------------------------------------------------- AppKit
// foundation/nssize, foundation/nsrect: the Core Graphics structures
typedef CGSize NSSize;
typedef CGRect NSRect;
extern "C" {
// foundation/nsmakesize(_:_:), foundation/nsmakerect(_:_:_:_:)
NSSize NSMakeSize(CGFloat w, CGFloat h);
NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h);
}

@class NSWindow, NSGraphicsContext;

// appkit/nsappearance/name
typedef NSString* NSAppearanceName;
extern "C" {
// appkit/nsappearance/name/aqua, appkit/nsappearance/name/darkaqua
extern const NSAppearanceName NSAppearanceNameAqua;
extern const NSAppearanceName NSAppearanceNameDarkAqua;
// appkit/nscolor/systemcolorsdidchangenotification
extern const NSNotificationName NSSystemColorsDidChangeNotification;
}
// appkit/nsappearance
@interface NSAppearance : NSObject
// appkit/nsappearance/bestmatch(from:)
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray<NSAppearanceName>*)appearances;
// appkit/nsappearance/performascurrentdrawingappearance(_:)
- (void)performAsCurrentDrawingAppearance:(void (^)(void))block;
@end
// appkit/nsapplication
@interface NSApplication : NSObject
// appkit/nsapplication/effectiveappearance: key-value observable
@property(readonly, strong) NSAppearance* effectiveAppearance;
@end
// appkit/nsapp
extern "C" NSApplication* NSApp;
// appkit/nscolorspace
@interface NSColorSpace : NSObject
// appkit/nscolorspace/srgb
@property(class, readonly, strong) NSColorSpace* sRGBColorSpace;
@end
// appkit/nscolor
@interface NSColor : NSObject
// appkit/nscolor/clear
@property(class, strong, readonly) NSColor* clearColor;
// appkit/nscolor/controlaccentcolor
@property(class, strong, readonly) NSColor* controlAccentColor;
// appkit/nscolor/usingcolorspace(_:)
- (NSColor*)colorUsingColorSpace:(NSColorSpace*)space;
// appkit/nscolor/redcomponent, appkit/nscolor/greencomponent, appkit/nscolor/bluecomponent
@property(readonly) CGFloat redComponent;
@property(readonly) CGFloat greenComponent;
@property(readonly) CGFloat blueComponent;
@end

// appkit/nsview/autoresizingmask-swift.struct
typedef NSUInteger NSAutoresizingMaskOptions;
enum : NSAutoresizingMaskOptions {
    NSViewNotSizable = 0,
    NSViewMinXMargin = 1,
    NSViewWidthSizable = 2,
    NSViewMaxXMargin = 4,
    NSViewMinYMargin = 8,
    NSViewHeightSizable = 16,
    NSViewMaxYMargin = 32,
};
// appkit/nsview
@interface NSView : NSObject
// appkit/nsview/init(frame:)
- (instancetype)initWithFrame:(NSRect)frameRect;
// appkit/nsview/window: unowned(unsafe), not weak
@property(readonly, unsafe_unretained) NSWindow* window;
// appkit/nsview/frame, appkit/nsview/bounds
@property NSRect frame;
@property NSRect bounds;
// appkit/nsview/autoresizingmask
@property NSAutoresizingMaskOptions autoresizingMask;
// appkit/nsview/addsubview(_:)
- (void)addSubview:(NSView*)view;
@end

// appkit/nswindow/titlevisibility-swift.enum
typedef NSInteger NSWindowTitleVisibility;
enum : NSWindowTitleVisibility { NSWindowTitleVisible = 0, NSWindowTitleHidden = 1 };
// appkit/nswindow/stylemask-swift.struct
typedef NSUInteger NSWindowStyleMask;
enum : NSWindowStyleMask {
    NSWindowStyleMaskBorderless = 0,
    NSWindowStyleMaskTitled = 1 << 0,
    NSWindowStyleMaskClosable = 1 << 1,
    NSWindowStyleMaskMiniaturizable = 1 << 2,
    NSWindowStyleMaskResizable = 1 << 3,
    NSWindowStyleMaskFullSizeContentView TW_MACOS(10.10) = 1 << 15,
};
// appkit/nswindow
@interface NSWindow : NSObject
// appkit/nswindow/contentview
@property(strong) NSView* contentView;
// appkit/nswindow/titlevisibility
@property NSWindowTitleVisibility titleVisibility TW_MACOS(10.10);
// appkit/nswindow/titlebarappearstransparent
@property BOOL titlebarAppearsTransparent TW_MACOS(10.10);
// appkit/nswindow/stylemask
@property NSWindowStyleMask styleMask;
// appkit/nswindow/isopaque
@property(getter=isOpaque) BOOL opaque;
// appkit/nswindow/backgroundcolor
@property(copy) NSColor* backgroundColor;
@end

// appkit/nsimage/hintkey
typedef NSString* NSImageHintKey;
// appkit/nsfont/weight
typedef CGFloat NSFontWeight;
extern "C" {
// appkit/nsfont/weight/regular
extern const NSFontWeight NSFontWeightRegular TW_MACOS(10.11);
}
// appkit/nsimage/symbolconfiguration
TW_MACOS(11.0)
@interface NSImageSymbolConfiguration : NSObject
// appkit/nsimage/symbolconfiguration/init(pointsize:weight:)
+ (instancetype)configurationWithPointSize:(CGFloat)pointSize weight:(NSFontWeight)weight TW_MACOS(11.0);
@end
// appkit/nsimage
@interface NSImage : NSObject
// appkit/nsimage/size
@property NSSize size;
// appkit/nsimage/init(systemsymbolname:accessibilitydescription:)
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                    accessibilityDescription:(NSString*)description TW_MACOS(11.0);
// appkit/nsimage/withsymbolconfiguration(_:)
- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration TW_MACOS(11.0);
// appkit/nsimage/cgimage(forproposedrect:context:hints:)
- (CGImageRef)CGImageForProposedRect:(NSRect*)proposedDestRect
                             context:(NSGraphicsContext*)referenceContext
                               hints:(NSDictionary<NSImageHintKey, id>*)hints;
@end

// appkit/nsrunningapplication
@interface NSRunningApplication : NSObject
// appkit/nsrunningapplication/bundleidentifier
@property(readonly, copy) NSString* bundleIdentifier;
// appkit/nsrunningapplication/bundleurl, appkit/nsrunningapplication/executableurl
@property(readonly, copy) NSURL* bundleURL;
@property(readonly, copy) NSURL* executableURL;
// appkit/nsrunningapplication/isterminated
@property(readonly, getter=isTerminated) BOOL terminated;
// appkit/nsrunningapplication/terminate()
- (BOOL)terminate;
// appkit/nsrunningapplication/runningapplications(withbundleidentifier:)
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)bundleIdentifier;
@end

// appkit/nsworkspace
@interface NSWorkspace : NSObject
// appkit/nsworkspace/shared
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
// appkit/nsworkspace/icon(forfile:)
- (NSImage*)iconForFile:(NSString*)fullPath;
// appkit/nsworkspace/activatefileviewerselecting(_:)
- (void)activateFileViewerSelectingURLs:(NSArray<NSURL*>*)fileURLs;
// appkit/nsworkspace/recycle(_:completionhandler:)
- (void)recycleURLs:(NSArray<NSURL*>*)URLs
    completionHandler:(void (^)(NSDictionary<NSURL*, NSURL*>* newURLs, NSError* error))handler;
// appkit/nsworkspace/runningapplications
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
// appkit/nsworkspace/notificationcenter
@property(readonly, strong) NSNotificationCenter* notificationCenter;
// appkit/nsworkspace/accessibilitydisplayshouldreducemotion
@property(readonly) BOOL accessibilityDisplayShouldReduceMotion TW_MACOS(10.12);
@end
extern "C" {
// appkit/nsworkspace/accessibilitydisplayoptionsdidchangenotification
extern const NSNotificationName NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification TW_MACOS(10.10);
}

// ---------------------------------------------------------------- Security
// security/osstatus, security/errsecsuccess
typedef int32_t OSStatus;
enum : OSStatus { errSecSuccess = 0 };
// security/secstaticcode, security/seccsflags
typedef struct __SecCode const* SecStaticCodeRef;
typedef uint32_t SecCSFlags;
enum : SecCSFlags {
    kSecCSDefaultFlags = 0,
    // security/kseccssigninginformation, security/kseccsrequirementinformation
    // (security/code-signing-information-flags: internal, signing, requirement, ... in that order)
    kSecCSSigningInformation = 1 << 1,
    kSecCSRequirementInformation = 1 << 2,
};
extern "C" {
// security/secstaticcodecreatewithpath(_:_:_:)
OSStatus SecStaticCodeCreateWithPath(CFURLRef path, SecCSFlags flags, SecStaticCodeRef* staticCode);
// security/seccodecopysigninginformation(_:_:_:)
OSStatus SecCodeCopySigningInformation(SecStaticCodeRef code, SecCSFlags flags, CFDictionaryRef* information);
// security/kseccodeinfoentitlementsdict
extern const CFStringRef kSecCodeInfoEntitlementsDict;
}

// ---------------------------------------------------------------- DiskArbitration
// diskarbitration/dasessionref, diskarbitration/dadiskref
typedef struct __DASession* DASessionRef;
typedef struct __DADisk* DADiskRef;
extern "C" {
// diskarbitration/dasessioncreate(_:)
DASessionRef DASessionCreate(CFAllocatorRef allocator);
// diskarbitration/dadiskcreatefromvolumepath(_:_:_:)
DADiskRef DADiskCreateFromVolumePath(CFAllocatorRef allocator, DASessionRef session, CFURLRef path);
// diskarbitration/dadiskgetbsdname(_:)
const char* DADiskGetBSDName(DADiskRef disk);
}

// ---------------------------------------------------------------- IOKit
// kernel/mach_port_t, kernel/kern_return_t, kernel/io_object_t
typedef unsigned int mach_port_t;
typedef int kern_return_t;
typedef mach_port_t io_object_t;
typedef io_object_t io_service_t;
typedef io_object_t io_registry_entry_t;
typedef uint32_t IOOptionBits;
typedef char io_name_t[128];
extern "C" {
// iokit/kiomainportdefault
extern const mach_port_t kIOMainPortDefault TW_MACOS(12.0);
// iokit/iobsdnamematching(_:_:_:)
CFMutableDictionaryRef IOBSDNameMatching(mach_port_t mainPort, uint32_t options, const char* bsdName);
// iokit/ioservicegetmatchingservice(_:_:): consumes the matching dictionary
io_service_t IOServiceGetMatchingService(mach_port_t mainPort, CFDictionaryRef matching);
// iokit/ioregistryentrysearchcfproperty(_:_:_:_:_:)
CFTypeRef IORegistryEntrySearchCFProperty(io_registry_entry_t entry, const io_name_t plane, CFStringRef key,
                                          CFAllocatorRef allocator, IOOptionBits options);
// iokit/ioobjectrelease(_:)
kern_return_t IOObjectRelease(io_object_t object);
}
// iokit/kioserviceplane, iokit/kioregistryiteraterecursively, iokit/kioregistryiterateparents
#define kIOServicePlane "IOService"
enum : IOOptionBits { kIORegistryIterateRecursively = 0x00000001, kIORegistryIterateParents = 0x00000002 };

// ================================================================ BSD: bulk listing and dataless files
// A section of its own, kept apart from the framework sections above. These
// come from manual pages, not from developer.apple.com: getattrlist(2),
// getattrlistbulk(2), getiopolicy_np(3) (which documents setiopolicy_np) and
// chflags(2). On a Mac they live in <sys/attr.h>, <unistd.h>, <sys/vnode.h>,
// <sys/stat.h> and <sys/resource.h>; for the check, tools/macos-sdk/sys/
// carries attr.h and resource.h, which lead here.
extern "C" {
// getattrlist(2): attrgroup_t, struct attrlist, ATTR_BIT_MAP_COUNT
typedef uint32_t attrgroup_t;
struct attrlist {
    unsigned short bitmapcount; // ATTR_BIT_MAP_COUNT
    uint16_t reserved;          // 0
    attrgroup_t commonattr;
    attrgroup_t volattr;
    attrgroup_t dirattr;
    attrgroup_t fileattr;
    attrgroup_t forkattr;
};
#define ATTR_BIT_MAP_COUNT 5
// getattrlist(2): attribute_set_t, the ATTR_CMN_RETURNED_ATTRS value
typedef struct attribute_set {
    attrgroup_t commonattr;
    attrgroup_t volattr;
    attrgroup_t dirattr;
    attrgroup_t fileattr;
    attrgroup_t forkattr;
} attribute_set_t;
// getattrlist(2): attrreference_t, the ATTR_CMN_NAME value; offset from the reference itself
typedef struct attrreference {
    int32_t attr_dataoffset;
    uint32_t attr_length;
} attrreference_t;
// getattrlist(2): fsobj_type_t (ATTR_CMN_OBJTYPE), fsobj_id_t (ATTR_CMN_OBJID)
typedef uint32_t fsobj_type_t;
typedef struct fsobj_id {
    uint32_t fid_objno;
    uint32_t fid_generation;
} fsobj_id_t;
// getattrlist(2): the common, directory and file attributes the walk asks for
#define ATTR_CMN_NAME 0x00000001
#define ATTR_CMN_DEVID 0x00000002
#define ATTR_CMN_OBJTYPE 0x00000008
#define ATTR_CMN_FLAGS 0x00040000
#define ATTR_CMN_FILEID 0x02000000
#define ATTR_CMN_ERROR 0x20000000
#define ATTR_CMN_RETURNED_ATTRS 0x80000000
#define ATTR_DIR_ALLOCSIZE 0x00000008
#define ATTR_FILE_LINKCOUNT 0x00000001
#define ATTR_FILE_ALLOCSIZE 0x00000004
// getattrlist(2), ATTR_CMN_OBJTYPE: the values of enum vtype in <sys/vnode.h>
enum vtype { VNON, VREG, VDIR, VBLK, VCHR, VLNK, VSOCK, VFIFO, VBAD, VSTR, VCPLX };
// getattrlistbulk(2), macOS 10.10 and later
int getattrlistbulk(int dirfd, struct attrlist* attrList, void* attrBuf, size_t attrBufSize, uint64_t options)
    TW_MACOS(10.10);
// chflags(2): SF_DATALESS, the file is a dataless placeholder (macOS 10.15 and later)
#define SF_DATALESS 0x40000000
// getiopolicy_np(3): setiopolicy_np and the dataless materialisation policy (macOS 10.15 and later)
int setiopolicy_np(int iotype, int scope, int policy) TW_MACOS(10.5);
#define IOPOL_TYPE_VFS_MATERIALIZE_DATALESS_FILES 3
#define IOPOL_SCOPE_PROCESS 0
#define IOPOL_MATERIALIZE_DATALESS_FILES_DEFAULT 0
#define IOPOL_MATERIALIZE_DATALESS_FILES_OFF 1
#define IOPOL_MATERIALIZE_DATALESS_FILES_ON 2
}
