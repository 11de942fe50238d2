// Refused on Intel only: BOOL is signed char there, so a BOOL is no bool.
#import <Foundation/Foundation.h>

bool* asBool(BOOL* flag)
{
    return flag;
}
