/// Background tasks: a record that owns a task, what it talks through, and its sub-tasks.
///
/// A parent talks to its tasks by notifying queues and learns of their end from a termination
/// queue. The record and its list of sub-tasks belong to the parent's thread; the task sees its own
/// record alone and talks through queues.
///
/// Life of a record: the caller fills in what it wants, MP_CreateTask starts the task, and it ends
/// by MP_CloseTask or MP_TerminateTask, both of which end in MP_DisposeTask. Invalidating a
/// sub-task, that is setting its `taskID` to 0, marks one that has reported its end: it does not
/// count any more, its objects live until it is disposed of.
///
/// Statuses are those of multiprocessing.h, and MP_NoAnswerErr.
#pragma once

#include "base_types.h"
#include "multiprocessing.h"

/// A task did not answer: waiting for its end failed or timed out.
inline constexpr SInt32 MP_NoAnswerErr = 23000;

/// Which objects MP_CreateTask makes; see the fields of MP_Task.
enum MP_TaskObjects : UInt32 {
  kMP_QueueA = 1,
  kMP_CommandQueue = 2,
  kMP_CommandQueue2 = 4,
  kMP_QueueD = 8,
  kMP_QueueE = 16,
  kMP_TerminationQueue = 32,
  kMP_Event = 64,
  kMP_Semaphore = 128,
  kMP_CriticalRegion = 256,
};

/// A task. Start with all fields 0 and set those marked "in".
struct MP_Task {
  TaskProc entry;            ///< in: the task's function; it gets this record
  MPTaskID taskID;           ///< 0: not running, or invalidated
  UInt32 objects;            ///< in: which objects to make, MP_TaskObjects
  UInt32 terminationParam1;  ///< in: first and second parameter of the termination message
  UInt32 terminationParam2;
  MPQueueID queueA;
  MPQueueID commandQueue;   ///< messages to the task; a parent's: those of its sub-tasks to it
  MPSemaphoreID semaphore;  ///< made with maximum 1, initial 0
  MPQueueID queueE;
  MPEventID event;
  MPCriticalRegionID criticalRegion;
  MPQueueID commandQueue2;  ///< a second road for the same messages
  MPQueueID queueD;
  MPQueueID terminationQueue;  ///< told of the task's end
  Boolean closed;              ///< set by MP_CloseTask, which finds nothing to do then
  SInt32 number;               ///< in: among its siblings
  void* subTasks;              ///< sub-task elements, or sub-task pointer elements, not both
  OSType type;                 ///< in
  UInt32 subType;              ///< in: second key
  void* userData;              ///< in: for `disposeProc`
  void (*disposeProc)(void* userData);  ///< in: called on disposal, when set
};

/// An element of a list of sub-tasks.
struct MP_SubTaskElement {
  MP_SubTaskElement* next;
  MP_Task task;
};

/// An element for a sub-task whose record lives elsewhere. It is as large as MP_SubTaskElement, so
/// that taken for one it is a task that never ran.
struct MP_SubTaskPtrElement {
  MP_SubTaskPtrElement* next;
  MP_Task* task;
};

// One task.

/// Makes the objects named in `objects` and starts the task on a stack of 512 KB. The first failure
/// is returned; what was made stays for MP_DisposeTask.
SInt32 MP_CreateTask(MP_Task* task);
/// Asks a task to end and waits. Both command queues are emptied and get (`message`, 0, `param`);
/// then the termination queue is waited on, up to `timeoutSeconds` for each message. A termination
/// message whose first parameter is not `expected1`, or whose second is not `expected2`, is another
/// task's, and the wait starts again; an expectation of 0 takes any. The task is disposed of, and
/// the result is the task's own. MP_NoAnswerErr when the wait fails: everything stays, since the
/// task may still run; try again or terminate it. With no `taskID`, or when `closed`, 0 and nothing
/// is done.
SInt32 MP_CloseTask(MP_Task* task, UInt32 message, void* param, UInt32 expected1, UInt32 expected2,
                    SInt32 timeoutSeconds);
/// Ends a task from outside, with `terminationStatus` as its result, and clears `taskID`; with no
/// `taskID`, 0. With `wait` it waits for the end, however long, disposes of the task and gives the
/// task's result, or MP_NoAnswerErr if there was nothing to wait on; else it gives the status of
/// MPTerminateTask, a timeout as MP_NoAnswerErr. A task that had ended by itself is no failure.
SInt32 MP_TerminateTask(MP_Task* task, Boolean wait, SInt32 terminationStatus);
/// Deletes a task's objects, calls `disposeProc` and clears `userData`, and disposes of the
/// sub-tasks in the same way, with their list. The task must have ended.
void MP_DisposeTask(MP_Task* task);

// Sub-tasks. An operation "of type" looks at those whose `type` is the one given.

/// Appends a zeroed record, or an element for `task`, to the parent's list. -108 without memory.
SInt32 MP_AddSubTask(MP_Task* parent, MP_Task** task);
SInt32 MP_AddSubTaskPtr(MP_Task* parent, MP_Task* task);
/// How many have a `taskID`.
SInt32 MP_CountValidSubTasks(const MP_Task* parent);
SInt32 MP_CountValidSubTasksOfType(const MP_Task* parent, OSType type);
/// The one with a `taskID` and that number, or null.
MP_Task* MP_GetSubTaskByNumber(const MP_Task* parent, SInt32 number);
/// The `index`th, from 0, of those with that type and sub-type, or null; the second form on pointer
/// elements.
MP_Task* MP_GetSubTaskByTypeAndIndex(const MP_Task* parent, OSType type, UInt32 subType,
                                     SInt32 index);
MP_Task* MP_GetSubTaskPtrByTypeAndIndex(const MP_Task* parent, OSType type, UInt32 subType,
                                        SInt32 index);
/// The element of the one with that type and number, or null.
MP_SubTaskElement* MP_FindSubTaskLE_ByTypeAndNumber(const MP_Task* parent, OSType type,
                                                    SInt32 number);
/// Sends (the parent's `type`, `param`, 0) to each command queue of each sub-task, or of those of a
/// type. The first failure ends it.
SInt32 MP_SendNilMessageToAllSubTasks(const MP_Task* parent, void* param);
SInt32 MP_SendNilMessageToAllSubTasksOfType(const MP_Task* parent, OSType type, void* param);
/// Clears `taskID` of the first valid sub-task whose type is not the parent's, of the first valid
/// one of a type, of the one with a type and number.
void MP_InvalidateAnySubTask(MP_Task* parent);
void MP_InvalidateAnySubTaskOfType(MP_Task* parent, OSType type);
void MP_InvalidateSubTaskByTypeAndNumber(MP_Task* parent, OSType type, SInt32 number);
/// Deletes the element that holds the record, or the pointer; the task itself is left alone.
void MP_RemoveSubTaskFromList(MP_Task* parent, MP_Task* task);
void MP_RemoveSubTaskPtrFromList(MP_Task* parent, MP_Task* task);
/// MP_DisposeTask on each, or on those of a type; their elements are deleted. The last form takes
/// pointer elements; the records stay their owners'.
void MP_DisposeSubTasks(MP_Task* parent);
void MP_DisposeSubTasksOfType(MP_Task* parent, OSType type);
void MP_DisposeSubTaskPtrs(MP_Task* parent);
/// Sends the nil message to all, and waits on the parent's `commandQueue`, without limit, until
/// each valid sub-task has reported its end by a message whose first parameter is `doneMessage`;
/// other messages are ignored. Then disposes of all sub-tasks. A failed send is returned at once; a
/// failed wait after disposing.
SInt32 MP_CloseAllSubTasks(MP_Task* parent, void* param, UInt32 doneMessage);
/// The same for those of a type; the message that counts has `type` as its first parameter.
SInt32 MP_CloseAllSubTasksOfType(MP_Task* parent, OSType type, void* param);

// Queues, events, semaphores and critical regions by the address of their number.

/// Takes messages without waiting until there are none; 0, or the status of a failed wait.
SInt32 MP_EmptyQueue(MPQueueID queue);
/// Deletes what is there and clears the number; 0 means none and gives 0.
SInt32 MP_DeleteQueue(MPQueueID* queue);
SInt32 MP_DeleteEvent(MPEventID* event);
SInt32 MP_DeleteSemaphore(MPSemaphoreID* semaphore);
SInt32 MP_DeleteCriticalRegion(MPCriticalRegionID* region);
/// Deletes what is there, if anything, and makes a new one.
SInt32 MP_RecreateQueue(MPQueueID* queue);
SInt32 MP_RecreateEvent(MPEventID* event);
SInt32 MP_RecreateCriticalRegion(MPCriticalRegionID* region);
SInt32 MP_RecreateSemaphore(MPSemaphoreCount maximum, MPSemaphoreCount initial,
                            MPSemaphoreID* semaphore);

/// A zeroed block of `size` bytes at a multiple of 32, to be freed with MPFree; null without
/// memory.
void* MP_NewPtrClear(ByteCount size);

// Time. Milliseconds are rounded down; what a type cannot hold becomes its largest value.

UInt64 MP_AbsoluteToMilliSecond(AbsoluteTime time);
UInt64 MP_DurationToMilliSecond(Duration duration);
AbsoluteTime MP_MilliSecondToAbsolute(UInt64 milliseconds);
Duration MP_MilliSecondToDuration(UInt64 milliseconds);
/// Waits; a tick counts as 17 ms.
SInt32 MP_DelayMillisec(UInt32 milliseconds);
SInt32 MP_DelaySec(UInt32 seconds);
SInt32 MP_DelayTicks(UInt32 ticks);

// The pattern for a task per processor. A task answers each request; what it does with its share
// stands where MP_MyTaskTempl says so in a copy of the pattern.

/// One task of the pattern.
struct MP_TemplTask {
  MPTaskID taskID;
  MPQueueID requestQueue;  ///< first parameter: MP_TemplRequest
  MPQueueID resultQueue;   ///< first parameter: the status of the work
  SInt32 start;            ///< first item of the task's share
  SInt32 count;            ///< number of items in it
};

enum MP_TemplRequest : UInt32 { kMP_TemplWork = 1, kMP_TemplStop = 2 };

/// Starts a task for each processor. The caller ends them with MP_StopTasksTempl, which has run if
/// this fails; then all outputs are 0.
SInt32 MP_CreateTasksTempl(MP_TemplTask** records, SInt32* taskCount, MPQueueID* notificationQueue);
/// What each of them runs; `record` is its MP_TemplTask. Takes requests until one is not
/// kMP_TemplWork, and answers each with 0, or with -1 if it is unknown.
OSStatus MP_MyTaskTempl(void* record);
/// Shares out `total` items from `start` on, `total` / `taskCount` each (a remainder is left to the
/// caller), requests the work and waits for each result. The first failure of a call or of a task;
/// -50 for a task count below 1, or items that are no 32-bit numbers.
SInt32 MP_NotifyTasksTempl(MP_TemplTask* records, SInt32 start, SInt32 total, SInt32 taskCount);
/// Terminates the tasks, waits for their end and frees everything.
void MP_StopTasksTempl(MP_TemplTask* records, SInt32 taskCount, MPQueueID notificationQueue);
/// A task that ticks every 10 ms until it is terminated. The parameter is not used.
OSStatus MP_PeriodicTaskTempl(void* parameter);

/// What the pair of tasks below shares. The semaphores stand at 0 at first; whoever starts the
/// tasks makes them and writes the task numbers by way of MPCreateTask.
struct MP_ThreadPair {
  MPTaskID highTask;
  MPTaskID lowTask;
  MPSemaphoreID highTurn;
  MPSemaphoreID lowTurn;
};

/// A pair of tasks, of weight 9999 and 0, that hand the turn to each other; the low one begins.
/// They end, with that status, when waiting or signalling fails, as when a semaphore is deleted.
OSStatus MP_high_thread(void* pair);
OSStatus MP_low_thread(void* pair);
