#ifndef ZEF_TOOLS_VIEWERTEXT_H
#define ZEF_TOOLS_VIEWERTEXT_H

namespace TARN_TOOL
{
// viewer.html: the page around an embedded mesh, with @TITLE@, @HEADER@, @DATA@ and @SCRIPT@ once each where these
// belong.
extern const char* const VIEWER_PAGE;
// viewerMesh.js and viewer.js, in this order for @SCRIPT@. They read the elements that writeHtmlPicture() makes. Two
// texts, since compilers limit the length of one.
extern const char* const VIEWER_MESH_SCRIPT;
extern const char* const VIEWER_SCRIPT;

} // namespace TARN_TOOL

#endif
