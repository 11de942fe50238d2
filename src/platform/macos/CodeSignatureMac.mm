#include "platform/CodeSignature.h"

#import <Foundation/Foundation.h>
#import <Security/Security.h>

namespace tw {

QSet<QString> codeSigningGroups(const QByteArray& path)
{
    QSet<QString> groups;
    @autoreleasepool {
        NSURL* url = [NSURL fileURLWithFileSystemRepresentation:path.constData() isDirectory:NO relativeToURL:nil];
        SecStaticCodeRef code = nullptr;
        if (SecStaticCodeCreateWithPath((__bridge CFURLRef)url, kSecCSDefaultFlags, &code) != errSecSuccess || !code)
            return groups;
        CFDictionaryRef information = nullptr;
        // Apple lists the entitlements under the requirement information;
        // the signing information is asked for as well, as before.
        const OSStatus status = SecCodeCopySigningInformation(
            code, kSecCSSigningInformation | kSecCSRequirementInformation, &information);
        CFRelease(code);
        if (status != errSecSuccess || !information)
            return groups;
        NSDictionary* info = CFBridgingRelease(information);
        id entitlements = info[(__bridge NSString*)kSecCodeInfoEntitlementsDict];
        if (![entitlements isKindOfClass:NSDictionary.class])
            return groups;
        id list = entitlements[@"com.apple.security.application-groups"];
        if (![list isKindOfClass:NSArray.class])
            return groups;
        for (id item in (NSArray*)list) {
            if (![item isKindOfClass:NSString.class])
                return {};
            groups.insert(QString::fromNSString(item));
        }
    }
    return groups;
}

} // namespace tw
