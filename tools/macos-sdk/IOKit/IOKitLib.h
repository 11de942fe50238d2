// Every framework header leads to the one declarations file.
#import "../AppleDeclarations.h"
