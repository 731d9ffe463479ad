# The target QelDocumentation generates the documentation site in documentation/html of the build directory: the pages
# of docs/ and the reference of all public headers. It fails if a public class or operation has no comment.

find_package(Doxygen 1.9.4 REQUIRED)
find_path(DOXYGEN_AWESOME doxygen-awesome.css PATH_SUFFIXES share/doxygen-awesome-css REQUIRED)
mark_as_advanced(DOXYGEN_AWESOME)

set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/documentation)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_WARN_NO_PARAMDOC NO) # comments describe only parameters that need it
set(DOXYGEN_QUIET YES)

# The style sheet is light or dark, as the reader's system is.
set(DOXYGEN_HTML_EXTRA_STYLESHEET ${DOXYGEN_AWESOME}/doxygen-awesome.css
                                  ${DOXYGEN_AWESOME}/doxygen-awesome-sidebar-only.css
                                  ${PROJECT_SOURCE_DIR}/cmake/documentation/site.css)

# filter-page also copies pictures and other linked files into the site.
string(CONFIGURE
       [["*.md=\"@PROJECT_SOURCE_DIR@/cmake/documentation/filter-page\" \"@DOXYGEN_OUTPUT_DIRECTORY@/html\""]]
       DOXYGEN_FILTER_PATTERNS @ONLY)
set(DOXYGEN_VERBATIM_VARS DOXYGEN_FILTER_PATTERNS)

set(DOXYGEN_USE_MDFILE_AS_MAINPAGE ${PROJECT_SOURCE_DIR}/README.md)
set(DOXYGEN_TOC_INCLUDE_HEADINGS 0)

set(DOXYGEN_JAVADOC_AUTOBRIEF YES) # the first sentence is the brief description
set(DOXYGEN_DISTRIBUTE_GROUP_DOC YES) # a comment before `@{` applies to all members up to `@}`
set(DOXYGEN_HIDE_FRIEND_COMPOUNDS YES)
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED
    QEL_ANALYTICS_API=
    QEL_ANALYTICS_EXPORT=
    "QEL_CAPABILITY(name)="
    QEL_SCOPED_CAPABILITY=
    "QEL_GUARDED_BY(lock)="
    "QEL_PT_GUARDED_BY(lock)="
    "QEL_REQUIRES(lock)="
    "QEL_ACQUIRE(...)="
    "QEL_TRY_ACQUIRE(success)="
    "QEL_RELEASE(...)="
    QEL_NO_THREAD_SAFETY_ANALYSIS=)
set(DOXYGEN_STRIP_FROM_INC_PATH ${PROJECT_SOURCE_DIR})

set(DOXYGEN_GENERATE_TREEVIEW YES)
set(DOXYGEN_HAVE_DOT NO)

# The pages, in the order of the site's menu.
doxygen_add_docs(
  QelDocumentation
  README.md
  docs/index.md
  docs/embed-it.md
  docs/windows.md
  docs/c-interface.md
  docs/session-script.md
  docs/own-host-framework.md
  docs/settings.md
  docs/events.md
  docs/data-format.md
  docs/operating.md
  docs/collector.md
  docs/collector-api.md
  docs/troubleshooting.md
  docs/architecture.md
  docs/reliability.md
  docs/security.md
  docs/performance.md
  docs/decisions/README.md
  docs/decisions
  docs/namespaces.dox
  CONTRIBUTING.md
  CHANGELOG.md
  THIRD-PARTY-NOTICES.md
  ${QEL_PUBLIC_HEADERS}
  host/QelC/qel_analytics.h
  COMMENT "Generating the documentation site")
