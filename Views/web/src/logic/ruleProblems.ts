// The daemon refuses a rule past its limits with one 400 answer naming every
// problem: "A rule can have at most 100 keywords; this one has 101." and
// "The sender "…" is longer than 200 characters.". The rule editor shows each
// problem under the list it is about; this sorts them by list.

export type PatternList = 'senders' | 'keywords';
export type RuleProblems = Partial<Record<PatternList, string>>;

const listOf: Record<string, PatternList> = {
  senders: 'senders',
  sender: 'senders',
  keywords: 'keywords',
  keyword: 'keywords',
};

const problemPatterns = [
  /A rule can have at most \d+ (senders|keywords); this one has \d+\./g,
  /The (sender|keyword) ".*?…" is longer than \d+ characters\./gs,
];

export function ruleProblems(message: string): RuleProblems {
  const found: Partial<Record<PatternList, string[]>> = {};
  for (const pattern of problemPatterns) {
    for (const match of message.matchAll(pattern)) {
      const list = listOf[match[1]];
      (found[list] ??= []).push(match[0]);
    }
  }
  const problems: RuleProblems = {};
  for (const list of Object.keys(found) as PatternList[]) problems[list] = found[list]?.join(' ');
  return problems;
}
