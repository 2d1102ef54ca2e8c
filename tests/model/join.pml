// The meeting of join members: preparation links joins to occurrences, a cycle runs the members one after the other, aborts and the
// destruction of ended commands come in between at any point. README.md says what stands for what, and which switches exist.

#ifndef N
#define N 2          /* members A, B, C; they have their turns in this order */
#endif
#ifndef K
#define K 2          /* joins in each member's queue */
#endif
#ifndef OTHER
#define OTHER 0      /* 1: each join of A and B is either for all members or for A and B alone */
#endif
#ifndef SYNC
#define SYNC 0       /* 1: syncStartNextCmd, and one move behind each queue's joins */
#endif
#ifndef ABORTS
#define ABORTS 0     /* how many aborts there may be */
#endif
#ifndef SINGLE
#define SINGLE 0     /* 0: an abort takes a member's commands in order; 1: any one command */
#endif
#ifndef FAILS
#define FAILS 0      /* how many active commands may fail */
#endif
#ifndef SKIPS
#define SKIPS 0      /* how many turns may pass without the job being called */
#endif
#ifndef DESTROY
#define DESTROY 1    /* 0: ended commands stay, so that no occurrence dies */
#endif
#ifndef DUP
#define DUP 0        /* 1: the group names A twice */
#endif
#ifndef QUIET
#define QUIET 0      /* 1: nothing is aborted while an occurrence is looked for */
#endif
#ifndef PREPS
#define PREPS 1      /* preparation threads */
#endif

#define L (K + SYNC)
#define CMD(m, j) ((m) * L + (j))
#define MC (N * K)   /* every join opens one occurrence at most */
#define NONE 15

/* Groups: 0 is everybody, 1 is A and B. */
#define ALL ((1 << N) - 1)
#define MEMBERS(g) ((g) == 0 -> ALL : 3)
#define IN(mask, m) (((mask) >> (m)) & 1)
#define NAME(m) ('A' + (m))

/* States of a command; GONE is ended and destroyed. */
#define CREATED 0
#define PREPARED 1
#define ACTIVE 2
#define DONE 3
#define FAILED 4
#define ABORTED 5
#define GONE 6

/* How long ago the last member joined; LATER stands for every cycle behind the next one. */
#define NOT_YET 0
#define THIS_CYCLE 1
#define NEXT_CYCLE 2
#define LATER 3

/* Commands. */
byte st[N * L];      /* state */
byte cx[N * L];      /* the occurrence that the job holds, NONE without one */
bit gr[N * L];       /* the group of the join */
byte cur[N];         /* the command at the front: active, or the next to become so */
byte prep[N];        /* the next command to prepare */
byte latest[N];      /* the latest prepared command, NONE before the first */
bit wt[N];           /* m_waitForNextCmd of the active join */
bit busy[N];         /* preparation is at this member's command */

/* Occurrences, in order of their sequence numbers. */
byte refs[MC];       /* strong references; none: dead */
byte nxt[MC];        /* m_next, weak */
bit grp[MC];
byte lk[MC];         /* linked members */
byte jn[MC];         /* joined members */
byte age[MC];        /* since m_completionCycle */
bit ab[MC];          /* m_aborted */
byte head = NONE;    /* g_head, weak */
byte made;           /* g_idCounter - 1 */
bit mtx;             /* g_mtx */

/* What only the claims look at. */
byte rel[MC];        /* 0 nobody completed, 1 somebody in this cycle, 2 somebody in an earlier cycle */
bit inl[MC];         /* in the list: appended and not removed */
bit deadLink;        /* an occurrence died in the list */
byte notDone = N * L;   /* commands that are not done */

/* The abort in progress: commands from abLo up to but without abHi of member abM. */
byte abM = NONE;
byte abLo;
byte abHi;
bit aborting;        /* between the new state and onAbort, which no turn of the cycle separates */
byte aborts = ABORTS;
byte fails = FAILS;
byte skips = SKIPS;

bit started;         /* the queues are filled */

/* Scratch of one indivisible step; zero between steps. */
byte c;
byte p;
byte q;
byte k;
byte j;


inline clear() {
  c = 0; p = 0; q = 0; k = 0; j = 0
}

#define ALIVE(x) ((x) != NONE && refs[x] > 0)
#define ENDED(s) ((s) >= DONE)
#define TO_ABORT(x, y) (abM == (x) && (y) >= abLo && (y) < abHi)
#define COMPLETE(x) (jn[x] == MEMBERS(grp[x]) && !DUP)

#ifdef BREAK_DUP
#define ALL_LINKED(x) (lk[x] == MEMBERS(grp[x]))
#undef COMPLETE
#define COMPLETE(x) (jn[x] == MEMBERS(grp[x]))
#else
#define ALL_LINKED(x) (lk[x] == MEMBERS(grp[x]) && !DUP)
#endif

/* removeFromLinkedList: without effect on an occurrence that a walk does not find. */
inline removeFromList(x) {
  if
  :: head == x -> head = nxt[x]; nxt[x] = NONE; inl[x] = 0
  :: else ->
     q = head;
     do
     :: ALIVE(q) && nxt[q] == x -> nxt[q] = nxt[x]; nxt[x] = NONE; inl[x] = 0; break
     :: ALIVE(q) && nxt[q] != x -> q = nxt[q]
     :: !ALIVE(q) -> break
     od
  fi
}

/* removeAbortedContexts with determineAbortedFromCmdStates. */
inline purge() {
  c = head;
  do
  :: ALIVE(c) ->
     p = nxt[c];
     k = 0;
     do
     :: k < N * L -> ab[c] = ab[c] || (cx[k] == c && st[k] == ABORTED); k++
     :: k == N * L -> break
     od;
     if
     :: ab[c] -> removeFromList(c)
     :: else
     fi;
     c = p
  :: !ALIVE(c) -> break
  od
}

/* findMostRecent, and the walk to the oldest open occurrence; c is NONE when a new one is needed. */
inline findOpenFor(me, g) {
  c = head;
  do
  :: ALIVE(c) && grp[c] != g -> c = nxt[c]
  :: ALIVE(c) && grp[c] == g -> break
  :: !ALIVE(c) -> c = NONE; break
  od;
  if
  :: c != NONE && ab[c] -> removeFromList(c); c = NONE
  :: c != NONE && !ab[c] && IN(lk[c], me) -> c = NONE
  :: else
  fi;
#ifndef BREAK_WALK
  if
  :: c != NONE ->
     p = nxt[c];
     do
     :: ALIVE(p) ->
        if
        :: grp[p] == g && !IN(lk[p], me) -> c = p
        :: else
        fi;
        p = nxt[p]
     :: !ALIVE(p) -> break
     od
  :: else
  fi
#endif
}

/* An occurrence that the member could have taken and that is older than the one it takes; q is the taken one. */
inline checkOrder(me, g, q) {
  p = 0;
  do
  :: p < made ->
     if
     :: p != q && refs[p] > 0 && grp[p] == g && !ab[p] && !IN(lk[p], me) && p < q ->
#ifdef CLAIM_ONE_OCCURRENCE
        assert(false);
#endif
#ifdef CLAIM_ONLY_DEAD_LINKS
        assert(deadLink);
#endif
#ifdef CLAIM_DEAD_LINKS_HARMLESS
        assert(!deadLink);
#endif
        skip
     :: else
     fi;
     p++
  :: p == made -> break
  od
}

/* Members meet with joins of the same rank in their queues. */
inline checkRank(x, y) {
#ifdef CLAIM_SAME_RANK
  k = 0;
  do
  :: k < N * L -> assert(cx[k] != x || k % L == y); k++
  :: k == N * L -> break
  od
#else
  skip
#endif
}

inline linkAndKeep(me, y, chosen) {
  if
  :: chosen == NONE ->
     c = made;
     made++;
     grp[c] = gr[CMD(me, y)];
     nxt[c] = NONE;
     refs[c] = 1;
     printf("KAVO %c prepares Join %d and opens occurrence %d of group %d\n", NAME(me), y + 1, c + 1, grp[c])
  :: else ->
     c = chosen;
     printf("KAVO %c prepares Join %d and links into occurrence %d of group %d\n", NAME(me), y + 1, c + 1, grp[c])
  fi;
  checkOrder(me, grp[c], c);
  checkRank(c, y);
  lk[c] = lk[c] | (1 << me);
  cx[CMD(me, y)] = c;
  if
#ifndef BREAK_KEEP
  :: ALL_LINKED(c) -> removeFromList(c)
  :: !ALL_LINKED(c) && chosen == NONE -> nxt[c] = head; head = c; inl[c] = 1
#else
  :: chosen == NONE -> nxt[c] = head; head = c; inl[c] = 1
#endif
  :: else
  fi
}

inline release(x) {
  refs[x]--;
  if
  :: refs[x] == 0 ->
     /* Its own removal from the list finds nothing: who walks takes it for the end. */
     deadLink = deadLink || inl[x];
     if
     :: inl[x] -> printf("KAVO Occurrence %d dies in the list: a dead link\n", x + 1)
     :: else
     fi;
     inl[x] = 0; nxt[x] = NONE; lk[x] = 0; jn[x] = 0; age[x] = NOT_YET; ab[x] = 0; rel[x] = 0; grp[x] = 0
  :: else
  fi
}

/* Destruction of an ended command, and of its job with it. */
#define DESTROYABLE(x) (!aborting && cx[x] != NONE && ENDED(st[x]) && st[x] != GONE)

inline destroy(x) {
  printf("KAVO %c: Join %d is destroyed\n", NAME((x) / L), (x) % L + 1);
  c = cx[x];
  cx[x] = NONE;
  st[x] = GONE;
  release(c)
}

inline chooseGroups() {
  k = 0;
  do
  :: k < N * L -> cx[k] = NONE; k++
  :: k == N * L -> break
  od;
  k = 0;
  do
  :: k < MC -> nxt[k] = NONE; k++
  :: k == MC -> break
  od;
  k = 0;
  do
  :: k < N -> latest[k] = NONE; k++
  :: k == N -> break
  od;
#if OTHER
  if
  :: gr[CMD(0, 0)] = 1
  :: skip
  fi;
  if
  :: gr[CMD(1, 0)] = 1
  :: skip
  fi;
#if K > 1
  if
  :: gr[CMD(0, 1)] = 1
  :: skip
  fi;
  if
  :: gr[CMD(1, 1)] = 1
  :: skip
  fi;
#endif
#endif
  started = 1;
  clear()
}

active [PREPS] proctype Preparation() {
  byte me;
  byte chosen;
  atomic {
    if
    :: !started -> chooseGroups()
    :: else
    fi
  };
  do
  :: atomic {
       if
       :: prep[0] < L && !busy[0] -> me = 0
       :: prep[1] < L && !busy[1] -> me = 1
#if N > 2
       :: prep[2] < L && !busy[2] -> me = 2
#endif
       fi;
       j = prep[me];
       if
       :: st[CMD(me, j)] == ABORTED || TO_ABORT(me, j) ->
          printf("KAVO %c: command %d was aborted before it was prepared\n", NAME(me), j + 1);
          st[CMD(me, j)] = GONE;
          prep[me]++;
          j = 0;
          goto again
       :: else
       fi;
       if
       :: j == K ->
          printf("KAVO %c prepares the command behind its joins\n", NAME(me));
          st[CMD(me, j)] = PREPARED;
          latest[me] = j;
          prep[me]++;
          j = 0;
          goto again
       :: else ->
          printf("KAVO %c begins to prepare Join %d\n", NAME(me), j + 1);
          busy[me] = 1;
          j = 0
       fi
     };
#ifndef BREAK_MUTEX
     atomic { mtx == 0 -> mtx = 1 };
#endif
     d_step { purge(); clear() };
     d_step {
       findOpenFor(me, gr[CMD(me, prep[me])]);
       chosen = c;
       if
       :: chosen != NONE -> refs[chosen]++
       :: else
       fi;
       clear()
     };
     d_step {
       linkAndKeep(me, prep[me], chosen);
       mtx = 0;
       st[CMD(me, prep[me])] = PREPARED;
       latest[me] = prep[me];
       prep[me]++;
       busy[me] = 0;
       chosen = 0;
       clear()
     };
again:
     me = 0
#if DESTROY
  :: atomic {
       if
       :: DESTROYABLE(0) -> me = 0
       :: DESTROYABLE(1) -> me = 1
#if N * L > 2
       :: DESTROYABLE(2) -> me = 2
       :: DESTROYABLE(3 % (N * L)) -> me = 3 % (N * L)
#endif
#if N * L > 4
       :: DESTROYABLE(4) -> me = 4
       :: DESTROYABLE(5) -> me = 5
#endif
#if N * L > 6
       :: DESTROYABLE(6) -> me = 6
       :: DESTROYABLE(7 % (N * L)) -> me = 7 % (N * L)
       :: DESTROYABLE(8 % (N * L)) -> me = 8 % (N * L)
#endif
       fi;
       d_step { destroy(me); me = 0; clear() }
     }
#endif
  od
}

/* Somebody completes. */
inline checkCompletion(me, x) {
#ifdef CLAIM_SAME_CYCLE
  assert(rel[x] != 2);
#endif
#ifdef CLAIM_NOT_ABORTED
  assert(!ab[x]);
#endif
#ifdef CLAIM_NOBODY_COMPLETES
  assert(false);
#endif
#if defined(CLAIM_NEXT_PREPARED) || defined(CLAIM_NO_FAILED)
  k = 0;
  do
  :: k < N * L ->
#ifdef CLAIM_NEXT_PREPARED
     assert(cx[k] != x || latest[k / L] > k % L);
#endif
#ifdef CLAIM_NO_FAILED
     assert(cx[k] != x || st[k] != FAILED);
#endif
     k++
  :: k == N * L -> break
  od;
#endif
  skip
}

/* A member that has joined goes on waiting. */
inline checkWaiting(me, x) {
#ifdef CLAIM_NOBODY_LATE
  assert(ab[x] || age[x] != LATER);
#endif
#ifdef CLAIM_NOBODY_LEFT
  assert(!ab[x]);
#endif
#ifdef CLAIM_NO_FAILED_MISSING
  k = 0;
  do
  :: k < N * L -> assert(cx[k] != x || st[k] != FAILED || IN(jn[x], k / L)); k++
  :: k == N * L -> break
  od;
#endif
  skip
}

inline newCycle() {
  printf("KAVO cycle\n");
  k = 0;
  do
  :: k < MC ->
     if
     :: age[k] == THIS_CYCLE || age[k] == NEXT_CYCLE -> age[k]++
     :: else
     fi;
     if
     :: rel[k] == 1 ->
        rel[k] = 2;
#ifdef CLAIM_ALL_TOGETHER
        p = 0;
        do
        :: p < N * L -> assert(cx[p] != k || ENDED(st[p])); p++
        :: p == N * L -> break
        od
#endif
     :: else
     fi;
     k++
  :: k == MC -> break
  od
}

/* The command at the front, in j; it becomes active if it is prepared, and its joinPreExecute runs. */
inline takeNext(me) {
  j = 0;
  do
  :: j < L && ENDED(st[CMD(me, j)]) -> j++
  :: j == L || !ENDED(st[CMD(me, j)]) -> break
  od;
  if
  :: j < L && st[CMD(me, j)] == PREPARED && !TO_ABORT(me, j) ->
     st[CMD(me, j)] = ACTIVE;
#if SYNC
     wt[me] = (latest[me] == j);
#endif
     printf("KAVO %c starts its command %d\n", NAME(me), j + 1)
  :: else
  fi
}

inline complete(me, x) {
  checkCompletion(me, x);
  printf("KAVO %c completes its Join %d\n", NAME(me), j + 1);
  if
  :: rel[x] == 0 -> rel[x] = 1
  :: else
  fi;
  st[CMD(me, j)] = DONE;
  notDone--
}

#ifdef BREAK_EXACT
#define IN_TIME(x) (age[x] == NEXT_CYCLE || age[x] == LATER)     /* >= m_completionCycle + 1 */
#elif defined(BREAK_PLUS_ONE)
#define IN_TIME(x) (age[x] != NOT_YET)                           /* >= m_completionCycle */
#elif defined(BREAK_SAME_CYCLE)
#define IN_TIME(x) (age[x] == THIS_CYCLE)                        /* == m_completionCycle */
#else
#define IN_TIME(x) (age[x] == NEXT_CYCLE)
#endif

#ifdef BREAK_FLAG
#define IS_ABORTED(x) 0
#else
#define IS_ABORTED(x) ab[x]
#endif

inline joinAndWait(me) {
#if SYNC && !defined(BREAK_SYNC)
  if
  :: wt[me] -> wt[me] = (latest[me] == j)
  :: else
  fi;
#endif
  c = cx[CMD(me, j)];
  if
#if SYNC && !defined(BREAK_SYNC)
  :: wt[me] -> skip
  :: !wt[me] ->
#else
  :: true ->
#endif
     if
     :: !IN(jn[c], me) ->
        jn[c] = jn[c] | (1 << me);
        printf("KAVO %c joins occurrence %d\n", NAME(me), c + 1);
        if
        :: COMPLETE(c) -> age[c] = THIS_CYCLE
        :: else
        fi
     :: else
     fi;
     if
     :: !IS_ABORTED(c) && COMPLETE(c) && IN_TIME(c) -> complete(me, c)
     :: else -> checkWaiting(me, c)
     fi
  fi
}

inline runJob(me) {
  if
  :: j == K -> st[CMD(me, j)] = DONE; notDone--
  :: else -> joinAndWait(me)
  fi
}

/* Another job of the command fails; what is prepared behind it is aborted. */
inline fail(me) {
  fails--;
  printf("KAVO %c: Join %d fails\n", NAME(me), j + 1);
  st[CMD(me, j)] = FAILED;
  k = j + 1;
  do
  :: k < L ->
     if
     :: st[CMD(me, k)] == PREPARED ->
        st[CMD(me, k)] = ABORTED;
        if
        :: cx[CMD(me, k)] != NONE -> ab[cx[CMD(me, k)]] = 1
        :: else
        fi
     :: else
     fi;
     k++
  :: k == L -> break
  od;
  skip
}

#define IS_ACTIVE(me) (j < L && st[CMD(me, j)] == ACTIVE && !TO_ABORT(me, j))

active proctype Cycle() {
  byte me;
  started;
  do
  :: atomic {
       !aborting ->
       d_step {
         if
         :: me == 0 -> newCycle()
         :: else
         fi;
         takeNext(me)
       };
       if
       :: IS_ACTIVE(me) ->
          if
          :: d_step { runJob(me) }
#if SKIPS
          :: skips > 0 && j < K ->
             d_step { skips--; printf("KAVO The job of %c is not called\n", NAME(me)) }
#endif
#if FAILS
          :: fails > 0 && j < K && !(QUIET && mtx) -> d_step { fail(me) }
          :: fails > 0 && j < K && !(QUIET && mtx) ->
             d_step { runJob(me) };
             if
             :: st[CMD(me, j)] == ACTIVE -> d_step { fail(me) }
             :: else
             fi
#endif
          fi
       :: else
       fi;
       me = (me + 1) % N;
       clear()
     }
  od
}

#if ABORTS
#define ABORTABLE(x) x < N * L && !ENDED(st[x])
#define TAKE(x) abM = (x) / L; abHi = (x) % L + 1

active proctype Aborter() {
  started;
  do
  :: atomic {
       aborts > 0 ->
       if
       :: ABORTABLE(0) -> TAKE(0)
       :: ABORTABLE(1) -> TAKE(1)
#if N * L > 2
       :: ABORTABLE(2) -> TAKE(2)
       :: ABORTABLE(3 % (N * L)) -> TAKE(3 % (N * L))
#endif
#if N * L > 4
       :: ABORTABLE(4) -> TAKE(4)
       :: ABORTABLE(5) -> TAKE(5)
#endif
#if N * L > 6
       :: ABORTABLE(6) -> TAKE(6)
       :: ABORTABLE(7 % (N * L)) -> TAKE(7 % (N * L))
       :: ABORTABLE(8 % (N * L)) -> TAKE(8 % (N * L))
#endif
       :: else -> goto end
       fi;
#if SINGLE
       abLo = abHi - 1;
       printf("KAVO Command %d of %c is aborted\n", abHi, NAME(abM))
#else
       abLo = 0;
       printf("KAVO The commands of %c up to %d are aborted\n", NAME(abM), abHi)
#endif
     };
     do
     :: abLo < abHi ->
        atomic {
          (!busy[abM] || prep[abM] != abLo) && !(QUIET && mtx) ->
          if
          :: st[CMD(abM, abLo)] == PREPARED || st[CMD(abM, abLo)] == ACTIVE ->
             aborting = (cx[CMD(abM, abLo)] != NONE)
          :: else
          fi;
          if
          :: !ENDED(st[CMD(abM, abLo)]) -> st[CMD(abM, abLo)] = ABORTED
          :: else
          fi
        };
        d_step {
          if
          :: aborting ->
#ifdef CLAIM_NO_LATE_ABORT
             assert(rel[cx[CMD(abM, abLo)]] == 0);
#endif
             printf("KAVO %c: Join %d is aborted, and occurrence %d with it\n", NAME(abM), abLo + 1, cx[CMD(abM, abLo)] + 1);
             ab[cx[CMD(abM, abLo)]] = 1;
             aborting = 0
          :: else
          fi;
          abLo++;
          clear()
        }
     :: abLo == abHi -> break
     od;
     atomic { abM = NONE; abLo = 0; abHi = 0; aborts-- }
  od;
end:
  skip
}
#endif

#ifdef CLAIM_ALL_COMPLETE
ltl all_complete { <> (notDone == 0) }
#endif
