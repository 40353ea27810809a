#pragma once

// The one table of colours: ROW(name, colour, colour where more contrast is wanted). The name is that of the
// function in Style and of the {placeholder} in Style.qss.
#define TAVRIL_COLOURS(ROW)                                                                 \
  ROW(ground, 0x13161b, 0x13161b)      /* behind the cards */                               \
  ROW(card, 0x1b2027, 0x1b2027)        /* cards and panels */                               \
  ROW(recess, 0x161a20, 0x161a20)      /* picture and dial */                               \
  ROW(well, 0x101317, 0x101317)        /* what can be typed into */                         \
  ROW(aboutGround, 0x000000, 0x000000) /* behind About and the licence */                   \
  ROW(hairline, 0x2a313b, 0x74808f)    /* lines that divide, edges of cards */              \
  ROW(edge, 0x414c5a, 0x97a3b0)        /* edges of what can be used */                      \
  ROW(inputEdge, 0x74808f, 0xe6eaf0)   /* edges of what can be typed into or chosen from */ \
  ROW(face, 0x2a323d, 0x2a323d)        /* buttons */                                        \
  ROW(strongFace, 0x20796f, 0x1c5d56)  /* the button that one is here for */                \
  ROW(strongEdge, 0x2d9c8f, 0x7fe0d3)                                                       \
  ROW(flashFace, 0x7fe0d3, 0x7fe0d3) /* buttons with a dark text, which is when clicked */  \
  ROW(accent, 0x35c2b0, 0x35c2b0)    /* focus, live arc, connected */                       \
  ROW(arcGround, 0x343d4a, 0x343d4a) /* the part of the arc that is not live */             \
  ROW(text, 0xe6eaf0, 0xffffff)                                                             \
  ROW(mutedText, 0x97a3b0, 0xe6eaf0)                                                        \
  ROW(disabledText, 0x8b97a5, 0xc4ccd6)                                                     \
  ROW(liveText, 0x7fe0d3, 0x7fe0d3)    /* read-outs and frames */                           \
  ROW(warningText, 0xf4b65a, 0xf4b65a) /* errors, initialising */                           \
  ROW(restText, 0xffffff, 0xffffff)    /* buttons at rest, notices */                       \
  ROW(clickedText, 0x000000, 0x000000)                                                      \
  ROW(selection, 0x1c5d56, 0x1c5d56)
